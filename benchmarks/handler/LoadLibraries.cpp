#include <cstdio>
#include <ctime>

#include <dlfcn.h>

// Loads the C++ runtime, then the libraries that it is given, and prints how many nanoseconds each of the two took.
// Uses nothing of the C++ runtime itself, so that it starts without it.

namespace {

long now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000000L + time.tv_nsec;
}

bool load(const char* library) {
    if (dlopen(library, RTLD_NOW | RTLD_GLOBAL) != nullptr) {
        return true;
    }
    std::fprintf(stderr, "%s\n", dlerror());
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    const long start = now();
    if (!load("libstdc++.so.6")) {
        return 1;
    }
    const long afterRuntime = now();
    for (int number = 1; number < argc; ++number) {
        if (!load(argv[number])) {
            return 1;
        }
    }
    const long end = now();
    std::printf("%ld %ld\n", afterRuntime - start, end - afterRuntime);
    return 0;
}
