// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What onlookers are told of failures and message boxes beside their texts: why, and which line of the
// program it was.
#include "app/runtime/Runtime.h"
#include "show/ProgramPlace.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

const String* FindText(const ShowEvent::Fields& fields, std::string_view name) {
    for (const auto& [key, value] : fields) {
        if (key == name) return std::get_if<String>(&value);
    }
    return nullptr;
}

String Joined(const String& first, const char* between, const String& second) {
    if (first.IsEmpty() || second.IsEmpty()) return first + second;
    return first + between + second;
}

/// "Show.txt, line 3"; empty where no line of a program is loaded or carried out.
String PlaceText() {
    const ProgramPlace& place = CurrentPlace();
    return place.line == 0 ? String() : place.program + ".txt, line " + Str(place.line);
}

}  // namespace

void mainWindow::completeFailure(ShowEvent::Fields& fields) {
    // Neither a track nor a lookup is the fault of the line that is carried out meanwhile.
    const String* const known = FindText(fields, "what");
    const String what = known ? *known : String();
    const bool isOfLine = !(what == "track" || what == "tags" || what == "level" || what == "lookup");
    const ProgramPlace& place = CurrentPlace();
    if (isOfLine && place.line > 0) {
        fields.emplace_back("program", place.program);
        fields.emplace_back("line", place.line);
    }
    const String* const box = FindText(fields, "message");
    if (!box) return;
    boxTold = *box;
    boxDetails = Joined(Joined(*FindText(fields, "path"), ": ", *FindText(fields, "why")), "\n", PlaceText());
}

void mainWindow::tellMessage(Message& message) {
    if (!boxTold.IsEmpty() && boxTold == message.text) {
        message.details = boxDetails;
    } else {
        // Of an exception, or of the loader: nobody has told of it yet.
        tell(ShowEvent::Kind::Failed, {{"what", "message"},
                                       {"path", ""},
                                       {"why", Joined(message.text, " ", message.details)},
                                       {"message", message.text}});
        message.details = Joined(message.details, "\n", PlaceText());
    }
    boxTold = String();
    tell(ShowEvent::Kind::Message, {{"text", message.text}});
    // Who reports an exception is the last one to ask where it was.
    CurrentPlace() = {};
}

}  // namespace sorakaze
