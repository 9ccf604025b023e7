#include <dlfcn.h>

#include <latch>
#include <thread>

/// Loads a plugin over and over; each time a thread that has used it ends after it is unloaded. Fails if it cannot.
int main(int /*count*/, char** arguments) {
    for (int i = 0; i < 100; ++i) {
        void* const plugin = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
        if (!plugin) return 1;
        if (i % 10 != 0) {
            std::latch used(1), unloaded(1);
            std::thread user([&] {
                reinterpret_cast<void (*)()>(dlsym(plugin, "processEvents"))();
                used.count_down();
                unloaded.wait();
            });
            used.wait();
            dlclose(plugin);
            unloaded.count_down();
            user.join();
        } else {
            dlclose(plugin);
        }
    }
    return 0;
}
