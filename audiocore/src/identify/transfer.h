#pragma once

#include "identify/httpclient.h"

#include <curl/curl.h>

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
    static std::size_t takeBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t takeHeader(char* bytes, std::size_t size, std::size_t count, void* self);

    const HttpRequest m_request;
    HttpAnswer m_answer;
    std::size_t m_headerBytes = 0;
    CURL* m_easy = nullptr;
    CURLM* m_multi = nullptr;
};
} // namespace audiocore
