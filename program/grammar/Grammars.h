// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How editors colour program files: syntax definitions made from the checker's table of words. Pure
// functions, called when the application is built.
#pragma once

#include <string>

namespace sorakaze::grammar {

/// For KSyntaxHighlighting: Kate, KWrite and others.
std::string KateSyntax();
/// A TextMate grammar, as Visual Studio Code and others read it.
std::string TextMateGrammar();
/// The description that makes a folder with the grammar an extension of Visual Studio Code.
std::string CodeExtension();

}  // namespace sorakaze::grammar
