// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A request to one of the gateway's services, and its answer.
#pragma once

#include <map>
#include <string>

namespace sorakaze::gateway {

struct ServiceRequest {
    std::string method;
    /// As the request line has it, not decoded. A service sees what follows the gateway's token.
    std::string target;
    std::string host;  ///< of the header of that name
    /// The form's and the query's, decoded. Empty until the request has been admitted.
    std::multimap<std::string, std::string> fields;
};

struct ServiceAnswer {
    int status = 404;
    std::string contentType = "text/plain; charset=utf-8";
    std::string body;
    /// Of a redirect; else empty. A service gives a target, which the gateway makes an address.
    std::string location;
    /// Further headers, by name. A value can't hold a line end.
    std::map<std::string, std::string> headers = {};
    /// Why a service that this one asks gave no answer, sent as the header Failure; else empty.
    std::string failure = {};
};

}  // namespace sorakaze::gateway
