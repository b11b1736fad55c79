#pragma once

#include <string>

namespace audiocore {
/// How far an address may be trusted with a request.
enum class AddressKind {
    Https,        ///< encrypted, to wherever
    LoopbackHttp, ///< plain, but it does not leave this machine
    Refused       ///< everything else, and what is no address
};

AddressKind kindOf(const std::string& address);
/// The text as a part of an address or a form.
std::string percentEncoded(const std::string& text);
} // namespace audiocore
