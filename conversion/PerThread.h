#pragma once

namespace Velo::OS::Telemetry {

/// Calls `use` with the thread's own `T`, made at its first use and kept, because it costs more to make than to use.
/// While a thread or the process ends, the thread's own may be gone before the last event is: then with a fresh one.
template <typename T, typename Use>
auto withThreadsOwn(Use use) {
    thread_local bool gone = false;  // has no destructor, so it can be read to the very end
    if (gone) {
        T fresh;
        return use(fresh);
    }
    struct Own {
        T value;
        ~Own() { gone = true; }
    };
    thread_local Own own;
    return use(own.value);
}

}  // namespace Velo::OS::Telemetry
