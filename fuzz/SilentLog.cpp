// Run before the first input: every log line is formatted, so that what it reads is checked, and none is shown.

#include <android/log.h>

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger([](const auto*... /*line*/) {});  // the logger of a device has other parameters
    return 0;
}
