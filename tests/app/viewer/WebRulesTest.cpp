// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "app/viewer/program/WebRules.h"

namespace sorakaze::viewer {
namespace {

constexpr const char* kForm = "http://voice.example.com/a/voice_neo/vsdemo.aspx";
constexpr const char* kOwnForm = "http://127.0.0.1:4000/token/voice_neo/vsdemo.aspx";

QList<QHostAddress> Resolve(const QString& host) {
    if (host == "inside.example.org") return {QHostAddress("93.184.216.34"), QHostAddress("192.168.1.1")};
    return {QHostAddress("93.184.216.34")};
}

struct Asked {
    const char* url;
    const char* initiator;
    bool subFrame;
    bool allowed;
    const char* method = "GET";
};

constexpr Asked kPost{kForm, "", true, true, "POST"};

/// The requests of one page, one after another.
void Expect(const char* form, bool own, const std::vector<Asked>& requests) {
    WebRules rules(QUrl(form), own, Resolve);
    for (const Asked& asked : requests) {
        EXPECT_EQ(rules.Allows({QUrl(asked.url), QUrl(asked.initiator), asked.method, asked.subFrame}),
                  asked.allowed)
            << asked.url << " from " << asked.initiator;
    }
}

TEST(WebRules, ThePagePostsItsFormOnceAndToItsServiceAlone) {
    Expect(kForm, false,
           {{kForm, "", true, false},
            {kForm, "", false, false, "POST"},
            {"http://voice.example.com/a/other", "", true, false, "POST"},
            {"https://elsewhere.example.com/", "", true, false},
            {"file:///etc/passwd", "", true, false},
            {"ws://voice.example.com/", "http://voice.example.com", false, false},
            {"http://voice.example.com/sound.wav", "http://voice.example.com", false, false},
            {kForm, "", true, true, "POST"},
            {"http://voice.example.com/sound.wav", "http://elsewhere.example.com", false, false},
            {"http://voice.example.com/sound.wav", "http://voice.example.com", false, true},
            {kForm, "", true, false, "POST"},
            {"https://elsewhere.example.com/", "", true, false}});
}

TEST(WebRules, ARedirectAndTheAnswerLeadOnThroughTheWeb) {
    Expect(kForm, false,
           {kPost,
            {"https://answers.example.com/1", "", true, true},
            {"http://127.0.0.1/", "", true, false},
            {"https://sounds.example.net:8443/1.mp3", "https://answers.example.com", false, true},
            {"data:audio/wav;base64,AAAA", "https://answers.example.com", false, true},
            {"https://frames.example.net/", "https://answers.example.com", true, true},
            {"https://sounds.example.net/2.mp3", "https://frames.example.net", false, true},
            {"https://answers.example.com/2", "", true, false},
            {"https://sounds.example.net/", "https://sounds.example.net", false, false}});
    std::vector<Asked> redirects(6, {"https://answers.example.com/1", "", true, true});
    redirects.back().allowed = false;
    redirects.insert(redirects.begin(), kPost);
    Expect(kForm, false, redirects);
}

TEST(WebRules, NothingOfTheNeighbourhoodIsReached) {
    std::istringstream inside(
        "127.0.0.1 127.1.2.3 0.0.0.0 10.1.2.3 172.16.0.1 172.31.255.255 192.168.0.1 169.254.169.254 "
        "100.64.0.1 "
        "224.0.0.1 255.255.255.255 [::1] [::] [fe80::1] [fd00::1] [::ffff:192.168.0.1] [::ffff:127.0.0.1] "
        "[ff02::1] "
        "[2002:7f00:1::] [64:ff9b::a00:1] localhost a.localhost router printer.local nas.lan db.internal "
        "localhost. "
        "inside.example.org");
    for (std::string host; inside >> host;) {
        const std::string url = "http://" + host + "/";
        Expect(
            kForm, false,
            {kPost, {url.c_str(), "", true, false}, {url.c_str(), "http://voice.example.com", false, false}});
    }
    for (const char* host : {"93.184.216.34", "172.32.0.1", "[2606:2800:220:1::1]", "cdn.example.net"}) {
        const std::string url = std::string("https://") + host + "/";
        Expect(kForm, false, {kPost, {url.c_str(), "http://voice.example.com", false, true}});
    }
}

TEST(WebRules, AServiceOnThisMachineIsReachedAtItsPort) {
    const char* origin = "http://127.0.0.1:4000";
    const Asked post{kOwnForm, "", true, true, "POST"};
    Expect(kOwnForm, false,
           {post,
            {"http://127.0.0.1:4000/sound.wav", origin, false, true},
            {"http://127.0.0.1:4001/sound.wav", origin, false, false},
            {"https://127.0.0.1:4000/sound.wav", origin, false, false},
            {"https://sounds.example.net/", origin, false, true}});
    Expect(kOwnForm, true,
           {post,
            {"http://127.0.0.1:4000/token/voice_neo/speech/1.wav", origin, false, true},
            {"http://127.0.0.1:4000/token/search?q=1", origin, false, false},
            {"http://127.0.0.1:4000/token/voice_neo/../search?q=1", origin, false, false},
            {"http://127.0.0.1:4000/token/voice_neo/%2e%2e/search?q=1", origin, false, false},
            {"https://sounds.example.net/", origin, false, false}});
}

}  // namespace
}  // namespace sorakaze::viewer
