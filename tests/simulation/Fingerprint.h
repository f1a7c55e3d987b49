#pragma once

#include <cstdint>
#include <string_view>

namespace SettingsSimulation {

/// A number of texts and their order (FNV-1a, eight bytes at a time).
class Fingerprint {
public:
    void add(std::uint64_t number) { value = (value ^ number) * 0x100000001b3U; }
    void add(std::string_view text) {
        add(text.size());
        std::uint64_t word = 0;
        unsigned filled = 0;
        for (const char byte : text) {
            word = word << 8U | static_cast<unsigned char>(byte);
            if (++filled % 8 == 0) {
                add(word);
            }
        }
        add(word);
    }
    std::uint64_t result() const { return value ^ value >> 29U; }

private:
    std::uint64_t value = 0xcbf29ce484222325U;
};

}  // namespace SettingsSimulation
