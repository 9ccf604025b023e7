#include <cstdio>

#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/TelemetryEventProcessorBuilder.h"

using namespace Velo::OS::Telemetry;

int main() {
    const auto processor = TelemetryEventProcessorBuilder(nullptr, nullptr).build();
    EventResult result = processor->processEvent(std::make_unique<TelemetryEventBundle>("launch", 1000U, false));
    std::puts(result.takeValue()->getJsonString().c_str());
}
