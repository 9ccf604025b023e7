#pragma once

#include <utils/String16.h>

#include <string>

namespace Velo::OS::Telemetry {

// Between UTF-8 and the UTF-16 of the platform, up to the first NUL. The platform's own conversions measure first and
// take several passes; nearly all keys and texts are ASCII, which needs one.

android::String16 toString16(const char* text);

/// Replaces `out`, whose memory is used again.
void toUtf8(const android::String16& text, std::string& out);

}  // namespace Velo::OS::Telemetry
