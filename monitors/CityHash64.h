#pragma once

#include <cstdint>
#include <string_view>

namespace Velo::OS::Telemetry {

/// CityHash64 (Pike and Alakuijala, 2011) in the form that LLVM's C++ library has for strings on 64-bit targets, which
/// differs from what its authors have released. The same on every machine, whatever the order of its bytes.
uint64_t cityHash64(std::string_view text);

}  // namespace Velo::OS::Telemetry
