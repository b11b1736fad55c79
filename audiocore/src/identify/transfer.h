#pragma once

#include "identify/httpclient.h"

#include <curl/curl.h>

#include <exception>
#include <memory>

namespace audiocore {
/// One request and its answer, without redirects.
class Transfer
{
public:
    struct Times
    {
        std::chrono::milliseconds connecting;
        std::chrono::milliseconds inAll;
    };

    Transfer(const HttpRequest& request, const Times& times);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    HttpAnswer run(const Cancellation& cancellation);
    /// Where the answer redirects to, as a whole address; empty when it does not.
    std::string redirect() const;

private:
    void setUp(const Times& times);
    void finish(CURLcode result);
    static std::size_t takeBody(char* bytes, std::size_t size, std::size_t count, void* self) noexcept;
    static std::size_t takeHeader(char* bytes, std::size_t size, std::size_t count, void* self) noexcept;

    const HttpRequest m_request;
    HttpAnswer m_answer;
    std::size_t m_headerBytes = 0;
    const char* m_refusal = nullptr; ///< why the answer was not taken whole
    std::exception_ptr m_fault;      ///< thrown while the library called, and due once it has returned
    CURL* m_easy = nullptr;
    CURLM* m_multi = nullptr;
};
} // namespace audiocore
