#pragma once

#include "identify/httpclient.h"
#include "identify/services.h"

#include <string>

/// The Cover Art Archive: a release's identifier in, its front picture out.
namespace audiocore::coverart {
/// Asks for the front picture, 500 pixels at its longer side.
HttpRequest frontRequest(const ServiceAddresses& addresses, const std::string& release);
/// Whether the bytes begin as a JPEG or PNG file does.
bool isPicture(const std::string& bytes);
} // namespace audiocore::coverart
