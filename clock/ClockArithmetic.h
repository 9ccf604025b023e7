#pragma once

#include <cstdint>
#include <ctime>

namespace Velo::OS::Telemetry {

/// The reading in milliseconds.
uint64_t toMilliseconds(const timespec& reading);

/// `wallMs` minus `monotonicMs`. A difference beyond the signed range is logged and becomes the largest signed value.
int64_t adjustmentBetween(uint64_t wallMs, uint64_t monotonicMs);

}  // namespace Velo::OS::Telemetry
