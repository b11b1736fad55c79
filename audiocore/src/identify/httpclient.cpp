#include "identify/httpclient.h"

#include "identify/address.h"
#include "identify/transfer.h"

#include <algorithm>

using audiocore::AddressKind;
using audiocore::HttpAnswer;
using audiocore::HttpClient;

namespace {
using Outcome = HttpAnswer::Outcome;

HttpAnswer failure(Outcome outcome, const std::string& error)
{
    HttpAnswer answer;
    answer.outcome = outcome;
    answer.error = error;
    return answer;
}

/// Whether the request is sent again as it is: the other redirects ask for the new address alone.
bool keepsForm(int code)
{
    return code == 307 || code == 308;
}
} // namespace

HttpAnswer HttpClient::send(HttpRequest request, const Cancellation& cancellation) const
{
    using std::chrono::milliseconds;
    const auto deadline = Cancellation::Clock::now() + m_limits.inAll;
    const AddressKind beginning = kindOf(request.address);
    if (beginning == AddressKind::Refused)
        return failure(Outcome::BadAddress, "the address is neither HTTPS nor of this machine");
    for (int redirects = 0; redirects <= m_limits.redirects; ++redirects) {
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - Cancellation::Clock::now());
        if (left <= milliseconds(0))
            return failure(Outcome::Failed, "the redirects take too long");
        Transfer transfer(request, {std::min(m_limits.connecting, left), left});
        HttpAnswer answer = transfer.run(cancellation);
        const std::string next = answer.outcome == Outcome::Answered ? transfer.redirect() : std::string();
        if (next.empty())
            return answer;
        const AddressKind kind = kindOf(next);
        if (kind != AddressKind::Https && (kind != beginning || kind == AddressKind::Refused))
            return failure(Outcome::BadAddress, "it redirects to an address that is not secure");
        request.address = next;
        if (!keepsForm(answer.code))
            request.form.clear();
    }
    return failure(Outcome::Failed, "it redirects too often");
}
