// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// write-grammars FOLDER: writes the editors' files into a folder of the station.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "program/grammar/Grammars.h"

namespace {

void Write(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << text;
    if (!out.flush()) throw std::runtime_error(file.string() + " can't be written");
}

}  // namespace

int main(int argc, char** argv) {
    using namespace sorakaze::grammar;
    if (argc != 2) {
        std::fputs("usage: write-grammars FOLDER\n", stderr);
        return 2;
    }
    try {
        const std::filesystem::path folder = argv[1];
        const std::filesystem::path code = folder / "sorakaze-program";
        Write(folder / "sorakaze-program.xml", KateSyntax());
        Write(code / "sorakaze-program.tmLanguage.json", TextMateGrammar());
        Write(code / "package.json", CodeExtension());
        Write(code / "language-configuration.json", "{\n  \"comments\": {\"lineComment\": \"#\"}\n}\n");
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "write-grammars: %s\n", error.what());
        return 1;
    }
}
