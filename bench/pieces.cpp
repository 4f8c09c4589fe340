// Times the operations that large scenes spend their time on.

#include <benchmark/benchmark.h>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "animation/vue_number.h"
#include "frame/number_text.h"
#include "output/output.h"
#include "reader/reader.h"

constexpr int64_t numberCount = 4096;

// Co-ordinates of both signs, with one to four digits before the point.
template <class Number>
static std::vector<Number> Coordinates()
{
    std::vector<Number> numbers(numberCount);
    uint32_t random = 1;
    for (Number &number : numbers) {
        random = random * 1664525 + 1013904223;
        number =
            static_cast<Number>(static_cast<int32_t>(random)) / static_cast<Number>(1 << (18 + random % 13));
    }
    return numbers;
}

template <class Number, class Print>
static void PrintNumbers(benchmark::State &state, Print print)
{
    const std::vector<Number> numbers = Coordinates<Number>();
    char text[512];
    for (auto _ : state)
        for (const Number number : numbers)
            benchmark::DoNotOptimize(print(text, number));
    state.SetItemsProcessed(state.iterations() * numberCount);
}

static void Snprintf(benchmark::State &state)
{
    PrintNumbers<float>(state, [](char *text, float number) {
        return std::snprintf(text, 512, "%f", static_cast<double>(number));
    });
}
BENCHMARK(Snprintf);

static void ToChars(benchmark::State &state)
{
    PrintNumbers<float>(state, [](char *text, float number) {
        return std::to_chars(text, text + 512, number, std::chars_format::fixed, 6).ptr;
    });
}
BENCHMARK(ToChars);

template <class Number>
static void PutFixed(benchmark::State &state)
{
    PrintNumbers<Number>(state, [](char *text, Number number) { return Mc3dsPutFixed(text, number); });
}
BENCHMARK(PutFixed<float>);
BENCHMARK(PutFixed<double>);

static void PutFixedWide(benchmark::State &state)
{
    PrintNumbers<float>(state, [](char *text, float number) { return Mc3dsPutFixedWide(text, number); });
}
BENCHMARK(PutFixedWide);

static void EmitVertices(benchmark::State &state)
{
    const std::vector<float> numbers = Coordinates<float>();
    auto *writer = static_cast<Mc3dsWriter *>(std::calloc(1, sizeof(Mc3dsWriter)));
    Mc3dsOptions options = {};
    writer->options = &options;
    writer->indent = 4;
    if (!Mc3dsOpenText(writer, "/dev/null"))
        return state.SkipWithError("no /dev/null");
    for (auto _ : state)
        for (size_t i = 0; i + 5 <= numbers.size(); i += 5)
            Mc3dsEmitVertexExt(writer, &numbers[i], numbers[i + 3], numbers[i + 4]);
    state.SetItemsProcessed(state.iterations() * (numberCount / 5));
    Mc3dsCloseText(writer);
    std::free(writer);
}
BENCHMARK(EmitVertices);

// The portions are a vertex, a matrix and a whole array.
static void ReadFloats(benchmark::State &state)
{
    std::vector<float> numbers(1 << 18);
    Mc3dsFile file = {};
    if (!Mc3dsBeginLoad(&file))
        return state.SkipWithError("no memory");
    const auto portion = static_cast<size_t>(state.range(0));
    file.stream = std::tmpfile();
    if (!file.stream || std::fwrite(numbers.data(), 4, numbers.size(), file.stream) != numbers.size())
        return state.SkipWithError("no temporary file");
    for (auto _ : state) {
        Mc3dsOpenStream(&file);
        for (size_t i = 0; i + portion <= numbers.size(); i += portion)
            Mc3dsReadFloats(&file, &numbers[i], portion);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(numbers.size() * 4));
    Mc3dsEndLoad(&file);
}
BENCHMARK(ReadFloats)->Arg(3)->Arg(12)->Arg(60000);

static void FindObject(benchmark::State &state)
{
    auto *scene = static_cast<Mc3dsFile *>(std::calloc(1, sizeof(Mc3dsFile)));
    if (!scene || !Mc3dsBeginLoad(scene))
        return state.SkipWithError("no memory");
    std::vector<std::string> names;
    for (int64_t i = 0; i < state.range(0); ++i) {
        Mc3dsObject object;
        Mc3dsObjectInit(&object, names.emplace_back("Mesh" + std::to_string(i)).c_str());
        Mc3dsAddObject(scene, &object);
    }
    for (auto _ : state)
        for (const std::string &name : names)
            benchmark::DoNotOptimize(Mc3dsFindObject(scene, name.c_str()));
    state.SetItemsProcessed(state.iterations() * state.range(0));
    Mc3dsEndLoad(scene);
    Mc3dsUnloadFile(scene);
}
BENCHMARK(FindObject)->Arg(200)->Arg(5000)->Arg(32000);

template <class Parse>
static void ParseWords(benchmark::State &state, Parse parse)
{
    char words[numberCount][16];
    const std::vector<double> numbers = Coordinates<double>();
    for (size_t i = 0; i < numbers.size(); ++i)
        std::snprintf(words[i], sizeof words[i], "%f", numbers[i]);
    for (auto _ : state)
        for (const char *word : words)
            benchmark::DoNotOptimize(parse(word));
    state.SetItemsProcessed(state.iterations() * numberCount);
}

static void Strtod(benchmark::State &state)
{
    ParseWords(state, [](const char *word) { return std::strtod(word, nullptr); });
}
BENCHMARK(Strtod);

static void ParseReal(benchmark::State &state)
{
    ParseWords(state, [](const char *word) {
        double number = 0.0;
        Mc3dsParseReal(word, &number);
        return number;
    });
}
BENCHMARK(ParseReal);

BENCHMARK_MAIN();
