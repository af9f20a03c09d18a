// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Catalogue.h"

#include <array>

#include "station/synth/Covers.h"
#include "station/synth/pieces/Pieces.h"

namespace sorakaze::station {

std::span<const Track> Tracks() {
    static constexpr std::array kTracks = {
        Track{"The Apricot Sextet/Lanterns at Noon.mp3", PlayBossa, LanternCover, PictureFormat::Jpeg,
              "Lanterns at Noon", "The Apricot Sextet", "Paper Weather", 3, 2014, "Bossa Nova"},
        Track{"雨音観測所/雲をかぞえる.flac", PlayClouds, CloudCover, PictureFormat::Png, "雲をかぞえる",
              "雨音観測所", "窓辺の天気図", 1, 2017, "Ambient", "Kumo o Kazoeru", "Amaoto Kansokujo",
              "Madobe no Tenkizu"},
        Track{"Eight Bit Orchard/Apples Per Second.ogg", PlayChiptune, PixelCover, PictureFormat::Png,
              "Apples Per Second", "Eight Bit Orchard", "Low Hanging Fruit", 5, 2011, "Chiptune"},
        Track{"The Teaspoon Quartet/Waltz for a Sleeping Cat.oga", PlayWaltz, CatCover, PictureFormat::Jpeg,
              "Waltz for a Sleeping Cat", "The Teaspoon Quartet", "Small Furniture", 7, 2009, "Folk"},
        Track{"Marlow Pike and the Stairs/Two Flights Up.m4a", PlayBlues, StairsCover, PictureFormat::Jpeg,
              "Two Flights Up (Live)", "Marlow Pike and the Stairs", "Nobody Fixed the Lamp", 2, 1998,
              "Blues"},
        Track{"小石楽団/千の階段.mp3", PlayMarimbas, StonesCover, PictureFormat::Png, "千の階段", "小石楽団",
              "木と石", 4, 2020, "Minimal", "Sen no Kaidan", "Koishi Gakudan", "Ki to Ishi"},
        Track{"Sleepy Umbrella Club/Window Seat.aiff", PlayLoFi, WindowCover, PictureFormat::Jpeg,
              "Window Seat", "Sleepy Umbrella Club", "Thursday Again", 6, 2021, "Lo-Fi"},
        Track{"The Corner Consort/Little Fugue in a Large Hat.opus", PlayFugue, HatCover, PictureFormat::Png,
              "Little Fugue in a Large Hat", "The Corner Consort", "Pocket Counterpoint", 12, 2003,
              "Classical"},
        // Without sort tags: an English show spells these in Latin letters by itself.
        Track{"灯台守の三重奏/夜更けの郵便船.m4a", PlayMailBoat, BoatCover, PictureFormat::Jpeg,
              "夜更けの郵便船", "灯台守の三重奏", "港の時刻表", 8, 2015, "Chamber"},
        Track{"金魚すくい同好会/百年目の風鈴.ogg", PlayWindChime, ChimeCover, PictureFormat::Png,
              "百年目の風鈴 (夕涼み)", "金魚すくい同好会", "縁側の夏", 2, 2019, "Folk"},
    };
    return kTracks;
}

std::span<const Playlist> Playlists() {
    static constexpr std::array kMorning = {0, 5, 3, 2, 7, 6};
    static constexpr std::array kLate = {6, 4, 1};
    static constexpr std::array kFarAway = {1, 8, 5, 9};
    static constexpr std::array kEverything = {3, 0, 7, 5, 2, 6, 4, 1};
    static constexpr std::array kPlaylists = {
        Playlist{"Morning Mix.m3u8", kMorning},
        Playlist{"Late Hours.pls", kLate},
        Playlist{"Far Away.m3u8", kFarAway},
        Playlist{"One of Each.xspf", kEverything},
    };
    return kPlaylists;
}

namespace {

std::string ArtistAndTitle(const Track& track) {
    return std::string(track.artist) + " - " + track.title;
}

std::string M3u(std::span<const Track> tracks, const Playlist& playlist, std::span<const int> seconds) {
    std::string text = "#EXTM3U\n";
    for (const int place : playlist.tracks) {
        const Track& track = tracks[static_cast<std::size_t>(place)];
        text += "#EXTINF:" + std::to_string(seconds[static_cast<std::size_t>(place)]) + "," +
                ArtistAndTitle(track) + "\n";
        text += std::string(track.file) + "\n";
    }
    return text;
}

std::string Pls(std::span<const Track> tracks, const Playlist& playlist, std::span<const int> seconds) {
    std::string text = "[playlist]\n";
    int number = 0;
    for (const int place : playlist.tracks) {
        const Track& track = tracks[static_cast<std::size_t>(place)];
        const std::string suffix = std::to_string(++number) + "=";
        text += "File" + suffix + track.file + "\n";
        text += "Title" + suffix + ArtistAndTitle(track) + "\n";
        text += "Length" + suffix + std::to_string(seconds[static_cast<std::size_t>(place)]) + "\n";
    }
    return text + "NumberOfEntries=" + std::to_string(number) + "\nVersion=2\n";
}

/// A path as a relative URI: every byte but letters, digits and a few signs as % and two digits.
std::string Uri(std::string_view path) {
    constexpr std::string_view kHex = "0123456789ABCDEF", kPlain = "/._~-";
    std::string uri;
    for (const char byte : path) {
        const bool letter =
            (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
        if (letter || kPlain.find(byte) != std::string_view::npos) {
            uri.push_back(byte);
            continue;
        }
        const auto value = static_cast<unsigned char>(byte);
        uri += {'%', kHex[value / 16], kHex[value % 16]};
    }
    return uri;
}

std::string Xspf(std::span<const Track> tracks, const Playlist& playlist, std::span<const int> seconds) {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<playlist version=\"1\" xmlns=\"http://xspf.org/ns/0/\">\n  <trackList>\n";
    for (const int place : playlist.tracks) {
        const Track& track = tracks[static_cast<std::size_t>(place)];
        text += "    <track>\n      <location>" + Uri(track.file) + "</location>\n";
        text += "      <title>" + std::string(track.title) + "</title>\n";
        text += "      <creator>" + std::string(track.artist) + "</creator>\n";
        text += "      <album>" + std::string(track.album) + "</album>\n";
        text += "      <duration>" + std::to_string(seconds[static_cast<std::size_t>(place)] * 1000) +
                "</duration>\n";
        text += "    </track>\n";
    }
    return text + "  </trackList>\n</playlist>\n";
}

}  // namespace

std::string PlaylistText(const Playlist& playlist, std::span<const int> seconds) {
    const std::string_view file = playlist.file;
    const auto tracks = Tracks();
    if (file.ends_with(".pls")) return Pls(tracks, playlist, seconds);
    if (file.ends_with(".xspf")) return Xspf(tracks, playlist, seconds);
    return M3u(tracks, playlist, seconds);
}

}  // namespace sorakaze::station
