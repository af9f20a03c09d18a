// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The sound files of the music folders by their names, for entries of playlists whose files aren't where the
// entries say. Built once from a listing, at about its cost; it opens no file. Letter case, normal forms and
// encodings of names don't count. Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sorakaze::player {

class FileIndex {
  public:
    /// The path of the sound file with an index.
    using PathOf = std::function<std::string(std::size_t)>;

    /// Of the first `count` files. `pathOf` outlives this.
    FileIndex(std::size_t count, PathOf pathOf);

    struct Match {
        /// Indices of the files that fit best: none, the one, or the ones that nothing tells apart. Not more
        /// than a few of these.
        std::vector<std::size_t> files;
        std::size_t components = 0;  ///< of the path's end that they have in common with what was looked for
    };
    /// The files with the longest common end of path, in whole components, at least the name. `spellings`
    /// are those of one place, with slashes or backslashes.
    Match ByPath(const std::vector<std::string>& spellings) const;

    /// The files whose names may be those of a track with that title. Not more than a few.
    std::vector<std::size_t> ByTitle(std::string_view title, std::string_view artist) const;

  private:
    using Table = std::vector<std::pair<std::uint64_t, std::uint32_t>>;  ///< by hash, sorted

    static std::vector<std::size_t> Find(const Table& table, std::string_view key);

    void TakeTitles() const;

    const PathOf pathOf_;
    Table byName_;
    mutable std::once_flag titlesTaken_;
    mutable Table byTitle_;  ///< made when first asked for: most playlists name files
};

}  // namespace sorakaze::player
