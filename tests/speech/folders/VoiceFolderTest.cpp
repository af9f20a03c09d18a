// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a folder's files tell of its voice.
#include <gtest/gtest.h>

#include <fstream>

#include "speech/say/folders/PiperProgram.h"
#include "speech/say/folders/VoiceFolder.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

namespace fs = std::filesystem;
using namespace speech;

void Write(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
}

TEST(VoiceDescriptionTest, WhatMakesNoSenseIsLeftOutAndTold) {
    const struct {
        const char *json, *complaint;
    } cases[] = {{R"({"names": ["A", "B"], "language": "en_US", "speed": 1.2, "gain": -3, "pause": 0.25,
                     "engine": "piper", "model": "sub/x.onnx", "speaker": 3, "licence": "CC0", "credit": "C"})",
                  ""},
                 {R"({"names": "A", )", "it is no JSON"},
                 {"[1]", "it is no JSON object"},
                 {R"({"speed": 40, "gain": 2})", "\"speed\" is unknown or has a wrong value"},
                 {R"({"model": "../../etc/passwd"})", "\"model\" is unknown or has a wrong value"},
                 {R"({"model": "/etc/passwd"})", "\"model\" is unknown or has a wrong value"},
                 {R"({"speaker": 1e300})", "\"speaker\" is unknown or has a wrong value"},
                 {R"({"language": "English/US"})", "\"language\" is unknown or has a wrong value"},
                 {R"({"engine": "sh"})", "\"engine\" is unknown or has a wrong value"},
                 {R"({"licence": "a\u001b[31m\tb"})", ""}};
    for (const auto& [json, complaint] : cases) {
        std::string told;
        const auto voice = ReadVoiceDescription(json, told);
        EXPECT_EQ(told, complaint) << json;
        EXPECT_TRUE(voice.speed == 1 || voice.speed == 1.2) << json;
        EXPECT_EQ(voice.licence.find('\x1b'), std::string::npos);
    }
    std::string told;
    const auto whole = ReadVoiceDescription(cases[0].json, told);
    EXPECT_EQ(whole.names.size(), 2U);
    EXPECT_EQ(whole.language, "en-us");
    EXPECT_EQ(whole.engine, EngineKind::Piper);
    EXPECT_EQ(whole.pause.count(), 250);
    EXPECT_EQ(ReadVoiceDescription(cases[3].json, told).gain, 2) << "the other members count";
}

TEST(VoiceFolderTest, FilesTellTheEngine) {
    const std::string card = "# Model card\n* License: CC BY 4.0\n";
    const std::string config = R"({"audio": {"sample_rate": 16000}, "espeak": {"voice": "de"}})";
    const struct {
        const char* name;
        std::vector<std::pair<const char*, std::string>> files;
        std::string engines, language;
    } cases[] = {
        {"Piper", {{"a.onnx", ""}, {"a.onnx.json", config}, {"MODEL_CARD", card}}, "piper ", "de"},
        {"PiperConfigBroken", {{"a.onnx", ""}, {"a.onnx.json", "{\"espeak\": 3"}}, "piper ", ""},
        {"Both",
         {{"en_GB-a.onnx", ""}, {"en_GB-a.onnx.json", ""}, {"tokens.txt", ""}},
         "sherpa-onnx piper ",
         "en-gb"},
        {"kokoro-en-v0_19",
         {{"model.onnx", ""}, {"voices.bin", ""}, {"tokens.txt", ""}},
         "sherpa-onnx ",
         "en"},
        {"Matcha",
         {{"vocos-22khz.onnx", ""}, {"model-steps-3.onnx", ""}, {"tokens.txt", ""}},
         "sherpa-onnx ",
         ""},
        {"Lone", {{"model.onnx", ""}}, "", ""},
        {"Flite", {{"x.flitevox", ""}}, "flite ", ""},
        {"Forced",
         {{"a.onnx", ""}, {"a.onnx.json", ""}, {"tokens.txt", ""}, {"voice.json", R"({"engine": "piper"})"}},
         "piper ",
         ""},
        {"Named", {{"a.onnx", ""}, {"a.onnx.json", ""}, {"voice.json", R"({"model": "b.onnx"})"}}, "", ""},
        {"Empty", {{"README", ""}}, "", ""}};
    const TemporaryFolder scratch;
    for (const auto& [name, files, engines, language] : cases) {
        for (const auto& [file, text] : files) Write(scratch.Path() / name / file, text);
        const auto voice = ReadVoiceFolder(scratch.Path() / name);
        ASSERT_TRUE(voice) << name;
        std::string found;
        for (const VoiceModel& model : voice->models) found += std::string(NameOf(model.engine)) + ' ';
        EXPECT_EQ(found, engines) << name;
        EXPECT_EQ(voice->description.language, language) << name;
    }
    EXPECT_EQ(ReadVoiceFolder(scratch.Path() / "Piper")->description.licence, "CC BY 4.0");
    EXPECT_EQ(ReadVoiceFolder(scratch.Path() / "kokoro-en-v0_19")->models[0].kind, NeuralKind::Kokoro);
    const VoiceModel matcha = ReadVoiceFolder(scratch.Path() / "Matcha")->models[0];
    EXPECT_EQ(matcha.kind, NeuralKind::Matcha);
    EXPECT_EQ(matcha.model.filename(), "model-steps-3.onnx");
    Write(scratch.Path() / "piper/piper", "a program");
    EXPECT_FALSE(ReadVoiceFolder(scratch.Path() / "piper")) << "holds a program";
}

TEST(PiperProgramTest, OnlyPiperIsPiper) {
    const TemporaryFolder scratch;
    const auto add = [&](const char* file, const std::string& text) {
        Write(scratch.Path() / file, text);
        fs::permissions(scratch.Path() / file, fs::perms::owner_all);
    };
    const auto words = [&](const char* folder) { return FindPiper({scratch.Path() / folder}).words; };
    add("mouse/piper", "#!/usr/bin/python3\nimport gi\nfrom piper.application import Application\n");
    add("script/bin/piper", "#!/usr/bin/python3\nfrom piper.__main__ import main\n");
    EXPECT_EQ(words("mouse"), FindPiper({}).words) << "a tool for mice";
    EXPECT_EQ(words("script"), FindPiper({}).words) << "its module isn't there";
    const char* const module = "script/lib/python3.11/site-packages/piper/__main__.py";
    add(module, "from .device import Mouse");
    EXPECT_EQ(words("script"), FindPiper({}).words) << "the module is another one";
    add(module, "from . import PiperVoice\n'--model' '--output_file'");
    EXPECT_EQ(words("script"), std::vector<std::string>{(scratch.Path() / "script/bin/piper").string()});
    add("binary/piper", std::string(3 << 20, 'x') + "--output_file\0--length_scale");
    EXPECT_EQ(words("binary").size(), FindPiper({}).words.size()) << "one word isn't enough";
    add("binary/piper", std::string((1 << 20) - 5, 'x') + "--output_file --length_scale");
    EXPECT_EQ(words("binary").size(), 1U);
    add("venv/bin/python3", "");
    add("venv/lib/python3.12/site-packages/piper/__main__.py", "PiperVoice --output_file --model");
    EXPECT_EQ(words("venv").size(), 4U) << "Python, -I, -m and the module";
}

}  // namespace
}  // namespace sorakaze::test
