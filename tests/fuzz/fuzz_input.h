// Test support for the fuzz targets: takes typed values off the front of
// the fuzzer's bytes (zero once they run out) and the rest as one block.
#ifndef CBLXML_TESTS_FUZZ_INPUT_H
#define CBLXML_TESTS_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace cblxml_fuzz {

class Input {
public:
    Input(const uint8_t *data, size_t size) : at(data), left(size) {}

    uint8_t byte()
    {
        if (left == 0)
            return 0;
        --left;
        return *at++;
    }
    // Up to `limit` bytes, its length taken from the next byte.
    std::string block(size_t limit)
    {
        size_t n = byte();
        if (n > limit)
            n = limit;
        if (n > left)
            n = left;
        std::string out(reinterpret_cast<const char *>(at), n);
        at += n;
        left -= n;
        return out;
    }
    std::string rest()
    {
        std::string out(reinterpret_cast<const char *>(at), left);
        at += left;
        left = 0;
        return out;
    }

private:
    const uint8_t *at;
    size_t left;
};

}  // namespace cblxml_fuzz

#endif
