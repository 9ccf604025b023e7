// How much stack the library takes for each level of nesting. It prints a table; docs/reliability.md says what for.

#include <json/reader.h>
#include <json/writer.h>
#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "telemetry/BundleToJson.h"
#include "telemetry/JsonToBundle.h"
#include "telemetry/TelemetryEventBundle.h"
#include "telemetry/VerificationMonitor.h"

namespace {

using android::String16;
using android::os::PersistableBundle;
using namespace Velo::OS::Telemetry;
using Work = std::function<void()>;

constexpr size_t kStackSize = size_t{1} << 24;

void* runWork(void* work) {
    (*static_cast<Work*>(work))();
    return nullptr;
}

/// The bytes of stack that the work takes on a thread of its own, that of the thread's start included: those from the
/// first that is not zero any more.
size_t stackUseOf(Work work) {
    void* const memory = mmap(nullptr, kStackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, memory, kStackSize);
    pthread_t thread{};
    pthread_create(&thread, &attributes, runWork, &work);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);

    const auto* const begin = static_cast<const char*>(memory);
    const char* const end = begin + kStackSize;
    const char* const used = std::find_if(begin, end, [](char byte) { return byte != 0; });
    const auto use = static_cast<size_t>(end - used);
    munmap(memory, kStackSize);
    return use;
}

Json::Value nestedJson(unsigned depth, Json::ValueType type) {
    Json::Value value(1);
    for (unsigned level = 0; level < depth; ++level) {
        Json::Value outer(type);
        (type == Json::arrayValue ? outer[0U] : outer["k"]) = std::move(value);
        value = std::move(outer);
    }
    return value;
}

PersistableBundle nestedBundle(unsigned depth, bool isArray) {
    auto bundle = std::make_unique<PersistableBundle>();
    for (unsigned level = 1; level < depth; ++level) {
        auto outer = std::make_unique<PersistableBundle>();
        if (isArray) outer->putBoolean(String16("utl_array_of_bundles"), true);
        outer->putPersistableBundle(String16(isArray ? "0" : "k"), *bundle);
        bundle = std::move(outer);
    }
    return *bundle;
}

/// What an operation works on; all that it makes and drops is made and dropped on the stack that is measured.
struct Input {
    explicit Input(unsigned depth)
        : object(nestedJson(depth, Json::objectValue)),
          array(nestedJson(depth, Json::arrayValue)),
          objectBundle(nestedBundle(depth, false)),
          arrayBundle(nestedBundle(depth, true)),
          text(Json::writeString(Json::StreamWriterBuilder(), object)),
          fromBundle("e", 0, false, objectBundle),
          sameFromBundle("e", 0, false, objectBundle),
          fromJson("e", object, 0, IntakeFormat::JsonBundle),
          sameFromJson("e", object, 0, IntakeFormat::JsonBundle),
          commented("e", withComment(object), 0, IntakeFormat::JsonBundle) {}

    static Json::Value withComment(Json::Value value) {
        value.setComment(std::string("// why"), Json::commentBefore);
        return value;
    }

    Json::Value object, array;
    PersistableBundle objectBundle, arrayBundle;
    std::string text;
    TelemetryEventBundle fromBundle, sameFromBundle, fromJson, sameFromJson, commented;
    Json::Value json;
    PersistableBundle bundle;
};

struct Operation {
    const char* name;
    void (*run)(Input&);
};

const Operation operations[] = {
    {"platform: copy and destroy a bundle", [](Input& in) { PersistableBundle copy(in.objectBundle); }},
    {"platform: compare bundles",
     [](Input& in) { (void)(in.objectBundle == in.arrayBundle || in.objectBundle == in.objectBundle); }},
    {"jsoncpp: copy and destroy a value", [](Input& in) { Json::Value copy(in.object); }},
    {"jsoncpp: parse", [](Input& in) { (void)getJsonFromString(in.text.c_str(), in.json); }},
    {"jsoncpp: write", [](Input& in) { (void)Json::writeString(Json::StreamWriterBuilder(), in.object); }},
    {"convertBundleToJson, objects", [](Input& in) { (void)convertBundleToJson(in.objectBundle, in.json); }},
    {"convertBundleToJson, arrays", [](Input& in) { (void)convertBundleToJson(in.arrayBundle, in.json); }},
    {"convertJsonToBundle, objects", [](Input& in) { (void)convertJsonToBundle("k", in.object, in.bundle); }},
    {"convertJsonToBundle, arrays", [](Input& in) { (void)convertJsonToBundle("k", in.array, in.bundle); }},
    {"event from a bundle, to text and destroyed",
     [](Input& in) { (void)TelemetryEventBundle("e", 0, false, in.objectBundle).getJsonString(); }},
    {"event from JSON, to value, destroyed",
     [](Input& in) { (void)TelemetryEventBundle("e", in.object, 0, IntakeFormat::JsonBundle).getJsonValue(); }},
    {"text of an event", [](Input& in) { (void)in.fromJson.getDebugString(); }},
    {"text of an event with a comment", [](Input& in) { (void)in.commented.getJsonString(); }},
    {"compare events from bundles", [](Input& in) { (void)(in.fromBundle == in.sameFromBundle); }},
    {"compare events from JSON", [](Input& in) { (void)(in.fromJson == in.sameFromJson); }},
    {"sortEventFields", [](Input& in) { (void)VerificationMonitor({}).sortEventFields(in.object, {}); }},
};

size_t stackUseOf(const Operation& operation, unsigned depth) {
    size_t use = 0;
    // The inputs are as deep as what is measured, so they are made and destroyed on a stack that is large enough.
    stackUseOf([&] {
        Input input(depth);
        use = stackUseOf([&] { operation.run(input); });
    });
    return use;
}

}  // namespace

int main() {
    constexpr unsigned kShallow = 200, kDeep = 900;
    std::printf("%-44s %15s %15s\n", "operation", "bytes a level", "KiB at 1000");
    for (const Operation& operation : operations) {
        const size_t shallow = stackUseOf(operation, kShallow);
        const size_t perLevel = (stackUseOf(operation, kDeep) - shallow) / (kDeep - kShallow);
        std::printf("%-44s %15zu %15zu\n", operation.name, perLevel, (shallow + perLevel * 800) / 1024);
    }
}
