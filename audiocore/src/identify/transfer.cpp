#include "identify/transfer.h"

#include "identify/address.h"

#include <new>

using audiocore::HttpAnswer;
using audiocore::Transfer;

namespace {
const char* const userAgent = "Melodrift/" MELODRIFT_VERSION " ( " MELODRIFT_HOME_PAGE " )";
constexpr std::size_t mostHeaderBytes = 64 * 1024;
/// How long a cancellation may go unnoticed.
constexpr int pollMilliseconds = 20;

bool libraryIsReady()
{
    static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return ready;
}
} // namespace

Transfer::Transfer(const HttpRequest& request, const Times& times) : m_request(request)
{
    if (!libraryIsReady())
        return;
    m_easy = curl_easy_init();
    m_multi = curl_multi_init();
    if (m_easy && m_multi)
        setUp(times);
}

Transfer::~Transfer()
{
    if (m_multi && m_easy)
        curl_multi_remove_handle(m_multi, m_easy);
    curl_easy_cleanup(m_easy);
    curl_multi_cleanup(m_multi);
}

void Transfer::setUp(const Times& times)
{
    curl_easy_setopt(m_easy, CURLOPT_URL, m_request.address.c_str());
    curl_easy_setopt(m_easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(m_easy, CURLOPT_USERAGENT, userAgent);
    curl_easy_setopt(m_easy, CURLOPT_CONNECTTIMEOUT_MS, long(times.connecting.count()));
    curl_easy_setopt(m_easy, CURLOPT_TIMEOUT_MS, long(times.inAll.count()));
    curl_easy_setopt(m_easy, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(m_request.largestAnswer));
    curl_easy_setopt(m_easy, CURLOPT_NOSIGNAL, 1L);
    // Or a cancelled transfer would wait for the name server.
    curl_easy_setopt(m_easy, CURLOPT_QUICK_EXIT, 1L);
    if (kindOf(m_request.address) == AddressKind::LoopbackHttp)
        curl_easy_setopt(m_easy, CURLOPT_NOPROXY, "*");
    if (!m_request.form.empty()) {
        curl_easy_setopt(m_easy, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(m_request.form.size()));
        curl_easy_setopt(m_easy, CURLOPT_POSTFIELDS, m_request.form.c_str());
    }
    curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, takeBody);
    curl_easy_setopt(m_easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(m_easy, CURLOPT_HEADERFUNCTION, takeHeader);
    curl_easy_setopt(m_easy, CURLOPT_HEADERDATA, this);
}

std::size_t Transfer::takeBody(char* bytes, std::size_t size, std::size_t count, void* self) noexcept
{
    auto* transfer = static_cast<Transfer*>(self);
    std::string& body = transfer->m_answer.body;
    if (size * count > transfer->m_request.largestAnswer - body.size()) {
        transfer->m_refusal = "the answer is too long";
        return 0;
    }
    try {
        body.append(bytes, size * count);
    } catch (const std::bad_alloc&) {
        transfer->m_fault = std::current_exception();
        return 0;
    }
    return size * count;
}

std::size_t Transfer::takeHeader(char*, std::size_t size, std::size_t count, void* self) noexcept
{
    auto* transfer = static_cast<Transfer*>(self);
    transfer->m_headerBytes += size * count;
    if (transfer->m_headerBytes <= mostHeaderBytes)
        return size * count;
    transfer->m_refusal = "the answer's headers are too long";
    return 0;
}

HttpAnswer Transfer::run(const Cancellation& cancellation)
{
    if (!m_easy || !m_multi || curl_multi_add_handle(m_multi, m_easy) != CURLM_OK) {
        m_answer.error = "the transfer library does not start";
        return m_answer;
    }
    int running = 1;
    while (running > 0 && !cancellation.isCancelled()) {
        const CURLMcode result = curl_multi_perform(m_multi, &running);
        if (result != CURLM_OK) {
            m_answer.error = curl_multi_strerror(result);
            break;
        }
        if (m_fault)
            std::rethrow_exception(m_fault);
        if (running > 0)
            curl_multi_poll(m_multi, nullptr, 0, pollMilliseconds, nullptr);
    }
    int left = 0;
    const CURLMsg* message = curl_multi_info_read(m_multi, &left);
    if (message && message->msg == CURLMSG_DONE)
        finish(message->data.result);
    if (cancellation.isCancelled())
        m_answer.outcome = HttpAnswer::Outcome::Cancelled;
    return std::move(m_answer);
}

void Transfer::finish(CURLcode result)
{
    if (result != CURLE_OK) {
        m_answer.error = m_refusal ? m_refusal : curl_easy_strerror(result);
        return;
    }
    long code = 0;
    curl_off_t retryAfter = 0;
    curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &code);
    curl_easy_getinfo(m_easy, CURLINFO_RETRY_AFTER, &retryAfter);
    m_answer.outcome = HttpAnswer::Outcome::Answered;
    m_answer.code = int(code);
    m_answer.retryAfter = std::chrono::seconds(retryAfter);
}

std::string Transfer::redirect() const
{
    char* address = nullptr;
    if (m_easy)
        curl_easy_getinfo(m_easy, CURLINFO_REDIRECT_URL, &address);
    return address ? address : std::string();
}
