// Why a server gave no answer, in one line for the person who asked: what is wrong, and what to try.
#pragma once

#include "cimhost/http/client.h"

#include <chrono>
#include <string>

namespace cimhost::remote {

/// What is known of an exchange that failed before there was an answer.
struct TransferFacts {
    int code = 0;                        ///< CURLcode
    long certificate = 0;                ///< X509_V_ERR_...
    int systemError = 0;                 ///< errno of the connection
    std::string detail;                  ///< what libcurl says
    std::chrono::milliseconds allowed{}; ///< until the deadline, when the server was first asked
};

std::string transferFailure(const http::Url& server, const TransferFacts& facts);

/// What is known of an answer that is none of CIM.
struct HttpFacts {
    unsigned status = 0;
    std::string contentType;
    std::string cimError; ///< value of the field CIMError (DSP0200, 6.2)
    std::string words;    ///< the beginning of a body in plain text
    bool hasUser = false; ///< the request named a user
};

std::string httpFailure(const http::Url& server, const HttpFacts& facts);

} // namespace cimhost::remote
