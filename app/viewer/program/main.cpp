// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// sorakaze-viewer <PAGE: runs the page that it is handed (see app/viewer/Page.h), unseen, until it is killed,
// and says when it is heard (see app/viewer/AudibleLines.h).
#include <unistd.h>

#include <QGuiApplication>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "app/viewer/AudibleLines.h"
#include "app/viewer/program/Confinement.h"
#include "app/viewer/program/EngineOptions.h"
#include "app/viewer/program/Environment.h"
#include "app/viewer/program/LoadedPage.h"

namespace {

/// To the application; where that has gone, so will this program soon.
void Tell(bool audible) {
    const std::string_view line = audible ? sorakaze::viewer::kAudibleLine : sorakaze::viewer::kSilentLine;
    [[maybe_unused]] const ssize_t written = ::write(STDOUT_FILENO, line.data(), line.size());
}

int Run(const sorakaze::viewer::Page& handed) {
    using namespace sorakaze::viewer;
    auto options = EngineOptions(handed.service);
    std::vector<char*> arguments;
    std::transform(options.begin(), options.end(), std::back_inserter(arguments),
                   [](std::string& option) { return option.data(); });
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    RegisterPageScheme();
    QGuiApplication application(count, arguments.data());
    // The name that a sound mixer shows.
    QGuiApplication::setApplicationName("Sorakaze");
    PageSchemeHandler source(handed);
    RequestFilter filter(handed.service);
    QWebEngineProfile profile;
    ConfigureProfile(profile, filter, source);
    const LoadedPage page(profile, Tell);
    return QGuiApplication::exec();
}

}  // namespace

int main(int argc, char**) {
    using namespace sorakaze::viewer;
    const std::string handed(std::istreambuf_iterator<char>(std::cin), {});
    const auto page = argc == 1 ? Unpack(handed) : std::nullopt;
    if (!page) {
        std::fprintf(stderr, "usage: sorakaze-viewer <PAGE, as Sorakaze hands it over\n");
        return 2;
    }
    CleanEnvironment();
    try {
        Confine(PortsFor(page->service));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return Run(*page);
}
