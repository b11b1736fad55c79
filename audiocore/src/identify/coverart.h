#pragma once

#include "identify/httpclient.h"
#include "identify/services.h"

#include <string>

/// The Cover Art Archive: a release's identifier in, its front picture out.
namespace audiocore::coverart {
/// Asks for the front picture, 500 pixels at its longer side.
HttpRequest frontRequest(const ServiceAddresses& addresses, const std::string& release);
/// Whether the bytes are a JPEG or PNG file from its beginning to its end, of a size that can be shown; more
/// bytes may follow. Looks at the file's parts, and decodes none.
bool isPicture(const std::string& bytes);
} // namespace audiocore::coverart
