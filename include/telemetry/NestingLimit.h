#pragma once

namespace Velo::OS::Telemetry {

/// How many arrays and objects, or bundles, may stand inside one another in what the library is given, the outermost
/// included. Whatever goes deeper is refused, each operation says how, because it would be walked by recursion: at this
/// depth the library's operations fit a stack of 1 MiB, which is what the platform gives its threads. jsoncpp's reader
/// stops at 1,000, so what was parsed may be put into something else and is still taken.
///
/// Bundles are copied by the platform, events among others do so, and no depth can be read off a bundle without a copy:
/// what its own copy does not survive cannot be refused.
inline constexpr unsigned kMaxNesting = 1024;

}  // namespace Velo::OS::Telemetry
