// Compares number texts with those of snprintf in the "C" locale. Exit status 1 if any differ.
//   mc3ds_numbers_proof floats [FIRST COUNT]   bit patterns, all 2^32 of them by default
//   mc3ds_numbers_proof doubles COUNT [SEED]
// snprintf formats each number once, with "%f". "%10.6f" has the same precision and adds only a field width:
// C pads shorter texts on the left with spaces. One number in 61 is formatted both ways, in case the C
// library differs.

#include <atomic>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

#include "frame/number_text.h"

static std::atomic<uint64_t> differences;

static void Compare(const char *format, double number, std::string_view expected, std::string_view actual)
{
    if (expected != actual && differences++ < 20)
        std::printf("%s of %a: expected \"%.*s\", got \"%.*s\"\n", format, number,
                    static_cast<int>(expected.size()), expected.data(), static_cast<int>(actual.size()),
                    actual.data());
}

template <class Number>
static void Check(Number number, bool askForWidth)
{
    const auto value = static_cast<double>(number);
    char expected[512] = "          nan", actual[512]; // the library prints NaN without a sign
    char *const unpadded = expected + 10;
    const size_t length =
        std::isnan(number) ? 3
                           : static_cast<size_t>(std::snprintf(unpadded, sizeof expected - 10, "%f", value));
    const size_t padding = length < 10 ? 10 - length : 0;
    const std::string_view wide(unpadded - padding, length + padding);
    Compare("%f", value, {unpadded, length}, {actual, Mc3dsPutFixed(actual, number)});
    Compare("%10.6f", value, wide, {actual, Mc3dsPutFixedWide(actual, number)});
    if (std::is_same_v<Number, float>) { // reports get their floats as doubles
        Compare("%f as a double", value, {unpadded, length}, {actual, Mc3dsPutFixed(actual, value)});
        Compare("%10.6f as a double", value, wide, {actual, Mc3dsPutFixedWide(actual, value)});
    }
    if (askForWidth && !std::isnan(number)) {
        const int asked = std::snprintf(actual, sizeof actual, "%10.6f", value);
        Compare("snprintf's %10.6f", value, {actual, static_cast<size_t>(asked)}, wide);
    }
}

// A double at most four representable steps above or below number.
static double Near(double number, uint64_t random)
{
    return std::bit_cast<double>(std::bit_cast<uint64_t>(number) + random % 9 - 4);
}

// A whole number below 2^bits; all lengths in bits are equally likely.
static double Whole(uint64_t random, uint64_t bits)
{
    return static_cast<double>(random >> (64 - bits + random % bits));
}

static double MakeDouble(uint64_t number, std::mt19937_64 *generator)
{
    static const double limits[] = {0x1p51, 0x1p52, 0x1p53, 0x1p63, 0x1p64}; // of arithmetic in millionths
    const uint64_t random = (*generator)(), other = (*generator)();
    const double sign = other >> 63 ? -1.0 : 1.0;
    switch (number % 8) {
    // Only odd multiples of 1/128 are exactly halfway between two texts of six decimals.
    case 0: return sign * (2 * Whole(random, 51) + 1) / 128;
    case 1: return sign * Near((2 * Whole(random, 51) + 1) / 128, other);
    case 2: return sign * Near((Whole(random, 52) + 0.5) / 1e6, other); // nearly halfway
    case 3: return sign * Near((limits[random % 5] + Whole(other, 12)) / 1e6, random >> 8);
    case 4: return sign * static_cast<double>(random >> 11) * 0x1p-53 * 2000;
    case 5: return sign * std::bit_cast<double>(random >> (12 + other % 52)); // subnormal
    case 6: return sign * Near(std::exp2(static_cast<double>(random % 140) - 30), other);
    default: // any bit pattern; mostly exponents near 0, because others have up to 300 digits
        return std::bit_cast<double>(
            number % 64 == 7 ? random : (random & ~(uint64_t{0x7C} << 56)) | uint64_t{0x3C} << 56);
    }
}

static void CheckStretch(bool floats, uint64_t start, uint64_t end, uint64_t seed)
{
    std::mt19937_64 generator(seed ^ start);
    for (uint64_t i = start; i < end; ++i)
        if (floats)
            Check(std::bit_cast<float>(static_cast<uint32_t>(i)), i % 61 == 0);
        else
            Check(MakeDouble(i, &generator), i % 61 == 0);
}

int main(int argc, char **argv)
{
    const bool floats = argc > 1 && std::strcmp(argv[1], "floats") == 0;
    if (argc < 2 || (!floats && argc < 3)) {
        std::fprintf(stderr, "usage: %s floats [FIRST COUNT] | doubles COUNT [SEED]\n", argv[0]);
        return 2;
    }
    const auto argument = [argc, argv](int i, uint64_t otherwise) {
        return i < argc ? std::strtoull(argv[i], nullptr, 0) : otherwise;
    };
    const uint64_t first = floats ? argument(2, 0) : 0, seed = argument(3, 1);
    const uint64_t end = first + (floats ? argument(3, uint64_t{1} << 32) : argument(2, 0));
    constexpr uint64_t stretch = 1 << 16;
    std::atomic<uint64_t> next = first;
    std::vector<std::thread> threads(std::thread::hardware_concurrency());
    for (std::thread &thread : threads)
        thread = std::thread([&] {
            for (uint64_t start; (start = next.fetch_add(stretch)) < end;)
                CheckStretch(floats, start, start + stretch < end ? start + stretch : end, seed);
        });
    for (std::thread &thread : threads)
        thread.join();
    std::printf("%llu %s in both formats, %llu differences\n", static_cast<unsigned long long>(end - first),
                argv[1], static_cast<unsigned long long>(differences.load()));
    return differences != 0;
}
