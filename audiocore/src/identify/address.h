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
/// Whether an address of the one kind may send on to one of the other: to HTTPS, or from this machine to this
/// machine.
bool mayRedirect(AddressKind from, AddressKind to);
/// The text as a part of an address or a form; it is shorter than 2 MB, as keys and fingerprints are.
std::string percentEncoded(const std::string& text);
} // namespace audiocore
