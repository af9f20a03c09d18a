// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "studio/check/Check.h"
#include "studio/check/FileReport.h"
#include "studio/check/ProgramFiles.h"
#include "studio/check/StationFacts.h"
#include "studio/check/TextFile.h"

namespace sorakaze::studio {

/// The files of a check, gone through once or again and again. Main thread.
class CheckPass {
  public:
    /// `options` outlives it. Throws StudioError.
    explicit CheckPass(const CheckOptions& options);

    /// Looks at all files as they are now. Throws StudioError.
    std::vector<FileReport> Run();
    /// What the last run has mended, for people.
    const std::vector<std::string>& Changes() const { return changes_; }
    /// Changes when one of the files does.
    std::string Stamp() const;

  private:
    std::vector<ProgramFile> Programs() const;
    FileReport CheckFile(const ProgramFile& file);
    FileReport Look(const ProgramFile& file, bool fixing);
    void Fix(const ProgramFile& file, const TextFile& text, const std::vector<check::Finding>& findings);

    const CheckOptions& options_;
    std::filesystem::path station_;
    std::unique_ptr<check::Surroundings> anywhere_;
    std::unique_ptr<StationFacts> facts_;  ///< null without a station
    std::vector<std::string> changes_;
};

}  // namespace sorakaze::studio
