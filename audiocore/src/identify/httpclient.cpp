#include "identify/httpclient.h"

#include "identify/address.h"
#include "identify/transfer.h"

#include <algorithm>

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

HttpAnswer HttpClient::send(HttpRequest request, const Cancellation& cancellation, const Turn& turn) const
{
    using std::chrono::milliseconds;
    milliseconds left = m_limits.inAll;
    if (kindOf(request.address) == AddressKind::Refused)
        return failure(Outcome::BadAddress, "the address is neither HTTPS nor of this machine");
    for (int redirects = 0; redirects <= m_limits.redirects; ++redirects) {
        if (turn && !turn())
            return failure(Outcome::Cancelled, "");
        if (left <= milliseconds(0))
            return failure(Outcome::Failed, "the redirects take too long");
        const auto start = Cancellation::Clock::now();
        Transfer transfer(request, {std::min(m_limits.connecting, left), left});
        HttpAnswer answer = transfer.run(cancellation);
        left -= std::chrono::duration_cast<milliseconds>(Cancellation::Clock::now() - start);
        const std::string next = answer.outcome == Outcome::Answered ? transfer.redirect() : std::string();
        if (next.empty())
            return answer;
        if (!mayRedirect(kindOf(request.address), kindOf(next)))
            return failure(Outcome::BadAddress, "it redirects to an address that is not secure");
        request.address = next;
        if (!keepsForm(answer.code))
            request.form.clear();
    }
    return failure(Outcome::Failed, "it redirects too often");
}
