#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>

#include "benchmarks/gate/Cases.h"
#include "benchmarks/gate/EventLines.h"

namespace {

using namespace Velo::OS::Telemetry::benchmarks;

constexpr char kUsage[] =
    "usage: telemetry_gate CASE EVENTS [SIZE]\n"
    "       telemetry_gate write-events known|new EVENTS FILE\n";

void runCase(const std::string& name, size_t events, size_t size) {
    for (const auto& cases : {pipelineCases(), conversionCases(), growthCases()}) {
        for (const Case& candidate : cases) {
            if (name == candidate.name) return candidate.run(events, size);
        }
    }
    throw std::runtime_error("there is no such case");
}

void writeEvents(const std::string& users, size_t count, const char* path) {
    std::ofstream file(path);
    for (const std::string& line : makeEventLines(users == "new" ? Users::New : Users::Known, count)) {
        file << line << '\n';
    }
    if (!file.flush()) throw std::runtime_error(std::string(path) + ": cannot be written");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return (std::cerr << kUsage), 2;
    try {
        if (argc == 5 && std::strcmp(argv[1], "write-events") == 0) {
            writeEvents(argv[2], std::stoul(argv[3]), argv[4]);
        } else {
            runCase(argv[1], std::stoul(argv[2]), argc > 3 ? std::stoul(argv[3]) : 1);
        }
    } catch (const std::exception& failure) {
        std::cerr << "telemetry_gate: " << argv[1] << ": " << failure.what() << '\n';
        return 1;
    }
}
