#include <mcl3ds20.h>
#include <stdio.h>

static int failed;

static void OnError(int32_t level, const char *text)
{
    failed |= level < 2;
    fprintf(stderr, "%s: %s\n", level < 2 ? "error" : "warning", text);
}

int main(int argc, char **argv)
{
    Mc3dsFile *scene;
    Mc3dsOptions options = {0};
    if (argc != 3)
        return fputs("usage: convert_c SCENE.3DS RESULT.mcx\n", stderr), 2;
    Mc3dsSetErrorCallback(OnError);
    scene = Mc3dsLoadFile(argv[1]);
    if (!scene)
        return 1;
    options.surfaceFlags = MC3DS_TEXTURES;
    options.outputFile = argv[2];
    options.scale = 1.0f;
    options.redWeight = 0.299f, options.greenWeight = 0.587f, options.blueWeight = 0.114f;
    Mc3dsOutput(scene, &options, NULL);
    Mc3dsUnloadFile(scene);
    printf("longest side: %f\n", options.size);
    return failed;
}
