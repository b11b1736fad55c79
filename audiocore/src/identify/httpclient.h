#pragma once

#include "identify/cancellation.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace audiocore {
struct HttpRequest
{
    std::string address;
    std::string form;              ///< sent by POST when not empty, percent-encoded
    std::size_t largestAnswer = 0; ///< bytes; a longer answer is a failure
};

struct HttpAnswer
{
    enum class Outcome {
        Answered, ///< with whatever code
        Cancelled,
        BadAddress, ///< the address, or one it redirects to, is neither HTTPS nor of this machine
        Failed      ///< no connection, broken off, too slow, too long, too many redirects
    };

    Outcome outcome = Outcome::Failed;
    int code = 0;
    std::string body;
    std::chrono::seconds retryAfter{0}; ///< what the server asks to wait for, 0 when it does not
    std::string error;                  ///< for the log, when there is no answer
};

/// Sends one request at a time and waits for the answer. Certificates are verified. Redirects lead to HTTPS
/// only, or round this machine when the request began there in plain HTTP. Any thread.
class HttpClient
{
public:
    struct Limits
    {
        std::chrono::milliseconds connecting{10000};
        std::chrono::milliseconds inAll{30000}; ///< redirects included, waiting for turns not
        int redirects = 5;
    };

    /// Waits until the next request may start; false when cancelled.
    using Turn = std::function<bool()>;

    HttpClient() = default;
    explicit HttpClient(const Limits& limits) : m_limits(limits) {}

    /// @param turn is taken before the request and before each one that follows a redirect.
    HttpAnswer send(HttpRequest request, const Cancellation& cancellation, const Turn& turn = nullptr) const;

private:
    Limits m_limits;
};
} // namespace audiocore
