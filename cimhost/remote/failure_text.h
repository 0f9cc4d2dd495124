// The reason why a server gave no answer, in one line for people: the error, and advice.
#pragma once

#include "cimhost/http/client.h"

#include <chrono>
#include <string>

namespace cimhost::remote {

/// An exchange that failed before there was an answer.
struct TransferFacts {
    int code = 0;                        ///< CURLcode
    long certificate = 0;                ///< X509_V_ERR_...
    int systemError = 0;                 ///< errno of the connection
    std::string detail;                  ///< text of libcurl
    std::chrono::milliseconds allowed{}; ///< until the deadline, when the server was first asked
};

std::string transferFailure(const http::Url& server, const TransferFacts& facts);

/// An answer that is not CIM-XML.
struct HttpFacts {
    unsigned status = 0;
    std::string contentType;
    std::string cimError; ///< value of the field CIMError (DSP0200, 6.2)
    std::string words;    ///< the beginning of a body in plain text
    bool hasUser = false; ///< the request named a user
};

std::string httpFailure(const http::Url& server, const HttpFacts& facts);

} // namespace cimhost::remote
