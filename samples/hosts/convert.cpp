#include <cstdio>
#include <memory>

#include <mcl3ds20.h>

using Scene = std::unique_ptr<Mc3dsFile, decltype(&Mc3dsUnloadFile)>;

int main(int argc, char **argv)
{
    if (argc != 3)
        return std::fputs("usage: convert_cpp SCENE.3DS RESULT.mcx\n", stderr), 2;
    static bool failed = false;
    Mc3dsSetErrorCallback([](int32_t level, const char *text) {
        failed = failed || level < 2;
        std::fprintf(stderr, "%s: %s\n", level < 2 ? "error" : "warning", text);
    });
    const Scene scene(Mc3dsLoadFile(argv[1]), Mc3dsUnloadFile);
    if (!scene)
        return 1;
    Mc3dsOptions options = {};
    options.surfaceFlags = MC3DS_TEXTURES;
    options.outputFile = argv[2];
    options.scale = 1.0f;
    options.redWeight = 0.299f, options.greenWeight = 0.587f, options.blueWeight = 0.114f;
    Mc3dsOutput(scene.get(), &options, nullptr);
    std::printf("longest side: %f\n", static_cast<double>(options.size));
    return failed;
}
