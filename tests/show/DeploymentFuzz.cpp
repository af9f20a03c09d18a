// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdlib>

#include "show/Deployment.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    try {
        const auto deployment = sorakaze::ParseDeployment({reinterpret_cast<const char*>(data), size});
        // It is put into a page's attribute and in an address.
        for (const auto& text : {deployment.voiceHost, deployment.viewState, deployment.searchHost}) {
            if (text.find_first_of("\"'<> \r\n") != std::string::npos) std::abort();
        }
    } catch (const sorakaze::DeploymentError&) {
    }
    return 0;
}
