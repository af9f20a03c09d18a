// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The words of program files: the one table that the checker reads and that the editors' grammars are
// generated from.
#pragma once

#include <array>
#include <string_view>

namespace sorakaze::words {

/// Without their colons, in the order in which a line is searched for them.
enum class Header { Program, Station, Band, Personality, JPersonality, Mode };
inline constexpr std::array<std::string_view, 6> kHeaders{"program",     "station",       "band",
                                                          "personality", "j_personality", "mode"};
/// In the order of ProgramLine::BlockName, which is that of the search.
inline constexpr std::array<std::string_view, 5> kBlocks{"opening", "introW", "intro", "jingle", "ending"};

enum class Verb { Say, Sayj, Play, Wait };
inline constexpr std::array<std::string_view, 4> kVerbs{"say", "sayj", "play", "wait"};

inline constexpr std::array<std::string_view, 3> kModes{"songs", "minites", "all"};

/// The placeholders of any command, without their brackets.
inline constexpr std::array<std::string_view, 10> kPlaceholders{
    "program", "station",    "band",        "song",    "name",
    "album",   "artistinfo", "personality", "trackno", "trackleft"};
/// The one that only `play` has, as its whole argument: the next track.
inline constexpr std::string_view kTrack = "iTunes";

/// A variant's number goes from 0 to this.
inline constexpr int kHighestVariant = 10;
/// Lines of a variant.
inline constexpr std::size_t kMostLines = 10;

/// What people write who think of another word than the system's.
struct OtherWord {
    std::string_view written;
    std::string_view meant;
};
inline constexpr std::array<OtherWord, 17> kOtherKeys{{{"jpersonality", "j_personality"},
                                                       {"closing", "ending"},
                                                       {"outro", "ending"},
                                                       {"end", "ending"},
                                                       {"start", "opening"},
                                                       {"open", "opening"},
                                                       {"introduction", "intro"},
                                                       {"intro_w", "introW"},
                                                       {"intro-w", "introW"},
                                                       {"title", "program"},
                                                       {"show", "program"},
                                                       {"programme", "program"},
                                                       {"frequency", "band"},
                                                       {"voice", "personality"},
                                                       {"host", "personality"},
                                                       {"announcer", "personality"},
                                                       {"length", "mode"}}};
inline constexpr std::array<OtherWord, 10> kOtherVerbs{{{"speak", "say"},
                                                        {"talk", "say"},
                                                        {"tell", "say"},
                                                        {"speech", "say"},
                                                        {"sound", "play"},
                                                        {"music", "play"},
                                                        {"pause", "wait"},
                                                        {"sleep", "wait"},
                                                        {"delay", "wait"},
                                                        {"silence", "wait"}}};
inline constexpr std::array<OtherWord, 8> kOtherModes{{{"minutes", "minites"},
                                                       {"minute", "minites"},
                                                       {"mins", "minites"},
                                                       {"min", "minites"},
                                                       {"tracks", "songs"},
                                                       {"track", "songs"},
                                                       {"titles", "songs"},
                                                       {"playlist", "all"}}};
inline constexpr std::array<OtherWord, 6> kOtherPlaceholders{{{"title", "song"},
                                                              {"track", "song"},
                                                              {"artist", "name"},
                                                              {"host", "personality"},
                                                              {"show", "program"},
                                                              {"info", "artistinfo"}}};

}  // namespace sorakaze::words
