/*
 * MCL3DS20: 3D Studio scenes for the Meshcaster renderer.
 *
 *   1. Mc3dsSetErrorCallback and Mc3dsSetMessageCallback install two functions of yours; all that the
 *      library has to say goes there, and it prints nothing by itself.
 *   2. Mc3dsLoadFile reads a .3DS file, and the .vue animation beside it, into one scene.
 *   3. Fill an Mc3dsOptions (zero it first) and hand both to Mc3dsOutput, as often as you like: it writes
 *      a .mcx script, with MC3DS_SOURCE C source, or with MC3DS_DIRECT builds the model at once.
 *   4. Mc3dsUnloadFile frees the scene.
 *
 * One call at a time: the library takes no locks, and a callback must not call back into it. Nothing
 * here depends on the host's locale: numbers in files and reports always have a decimal point.
 */
#ifndef MCL3DS20_H
#define MCL3DS20_H

#include <stdint.h>

#if defined(_WIN32)
#define MC3DS_API
#else
#define MC3DS_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A loaded scene. Opaque; made by Mc3dsLoadFile, freed by Mc3dsUnloadFile. */
typedef struct Mc3dsFile Mc3dsFile;

/* A clump of the Meshcaster library. Opaque; what may be done with one is that library's affair. */
struct McClump;

/*
 * A function of the host that receives reports.
 *   level  error channel: 0 the data or the memory failed, 1 a file or an item is given up, 2 a warning;
 *          message channel: 0 a file is started, 1 an object or material is taken in or dropped, 2 detail.
 *   text   NUL-terminated, at most 255 bytes, no line end behind it, possibly empty. It belongs to the
 *          library and is overwritten by the next report: copy what is needed later.
 * Every report comes, at every level; filtering is the host's. A report changes nothing of what the
 * library does next. An exception that the function throws is dropped. A thread may end inside it
 * (pthread_exit, cancellation); the memory and the files of the call it was in are then never released.
 */
typedef void (*Mc3dsCallback)(int32_t level, const char *text);

/* Bits of Mc3dsOptions.flags. Bits that are not named here are not read. */
#define MC3DS_ANIMATION 0x001u  /* write animationFile, if there are frames; objects stand as in frame 0 */
#define MC3DS_HEADER 0x002u     /* write headerFile */
#define MC3DS_SOURCE 0x004u     /* C source text, not script text */
#define MC3DS_PROTOS 0x008u     /* geometry once as prototypes; the tree holds instances */
#define MC3DS_FLAT 0x010u       /* all objects side by side with absolute transforms */
#define MC3DS_MERGED 0x020u     /* all objects in one clump */
#define MC3DS_PER_OBJECT 0x040u /* one file for each object; no header and no animation file */
#define MC3DS_FIT_SIZE 0x080u   /* work out scale from size; when clear, size from scale */
#define MC3DS_CENTRE 0x100u     /* shift the middle of the scene's bounds to the origin */
#define MC3DS_DIRECT 0x200u     /* build the model by library calls, before any other form; no file */
#define MC3DS_OPACITY 0x400u    /* opacity replaces the opacity of transparent materials */

/* Bits of Mc3dsOptions.surfaceFlags. */
#define MC3DS_TEXTURES 0x01u            /* keep textures; when clear their names stand in comments only */
#define MC3DS_TEXTURE_EXTENSION 0x02u   /* replace the extension of texture names by textureExtension */
#define MC3DS_TEXTURE_LIT 0x04u         /* texture mode Lit */
#define MC3DS_TEXTURE_FILTER 0x08u      /* texture mode Filter */
#define MC3DS_TEXTURE_FORESHORTEN 0x10u /* texture mode Foreshorten */

/* Bits of Mc3dsOptions.hintFlags. */
#define MC3DS_HINT_HS 0x1u       /* the hint HS */
#define MC3DS_HINT_EDITABLE 0x2u /* the hint EDITABLE */

/*
 * What the host asks of one Mc3dsOutput. The record and its texts are the host's; the library keeps no
 * pointer to them beyond the call, and writes back scale and size only. A null text counts as empty.
 */
typedef struct Mc3dsOptions {
    uint32_t flags;            /* MC3DS_ bits: what to write and in which form */
    uint32_t surfaceFlags;     /* MC3DS_TEXTURE bits */
    uint32_t hintFlags;        /* MC3DS_HINT bits */
    const char *clumpName;     /* the C function is called McBuild and this; not tested to be an identifier */
    const char *outputFile;    /* path of the scene's file, named in every banner; a per-object run takes at
                                  most six characters of it, then the object's index and ".mcx" */
    const char *headerFile;    /* path of the header file, read with MC3DS_HEADER */
    const char *animationFile; /* path of the animation file, read with MC3DS_ANIMATION */
    const char *textureExtension; /* without a point, for MC3DS_TEXTURE_EXTENSION; empty: none */
    float scale;                  /* factor from file units to target units; written with MC3DS_FIT_SIZE */
    float size;                   /* longest side of the scene's bounds in target units; read with
                                     MC3DS_FIT_SIZE, written without */
    float redWeight;   /* weights that reduce a colour (0 to 1 a channel) to one number of a surface; */
    float greenWeight; /* any finite value, not normalised; 0.299, 0.587 and 0.114 give the luma */
    float blueWeight;  /* of television */
    float opacity;     /* 0 to 1, not tested; read with MC3DS_OPACITY */
} Mc3dsOptions;

/*
 * Reads a scene from the 3D Studio file at path, and the .vue file beside it when the scene has frames.
 * Returns a scene that the caller owns, or null: the file can't be opened ("Unable to open file <%s>"),
 * is no 3D Studio file ("File is not a 3DS file"), memory for the empty scene is lacking, or path is null.
 * Damage inside the file never makes it null: reports tell what was given up, the rest is in the scene.
 */
MC3DS_API Mc3dsFile *Mc3dsLoadFile(const char *path);

/* Frees a scene and all that it owns. The pointer is dead afterwards. Null is passed over. */
MC3DS_API void Mc3dsUnloadFile(Mc3dsFile *file);

/*
 * Writes the scene as the options say. The scene is only read. There is no result: files that can't be
 * opened are reported on the error channel at level 1; failing writes (a full disk) are not noticed here.
 *   options   scale and size are written back, unless the scene has no objects
 *   clumpOut  with MC3DS_DIRECT: receives the clump that ended last, the outermost one, owned by the
 *             Meshcaster library; null if none ended. Without it, or for a scene without objects, not
 *             touched. May be null.
 * A null file or null options: nothing happens.
 */
MC3DS_API void Mc3dsOutput(const Mc3dsFile *file, Mc3dsOptions *options, struct McClump **clumpOut);

/*
 * Install the function that receives errors and warnings, or progress. Null turns the channel off.
 * Return the function that was installed before, null if none. In force until set again.
 */
MC3DS_API Mc3dsCallback Mc3dsSetErrorCallback(Mc3dsCallback callback);
MC3DS_API Mc3dsCallback Mc3dsSetMessageCallback(Mc3dsCallback callback);

/* The version text "3.0", the number behind "V" in every banner. Constant; not to be freed. */
MC3DS_API const char *Mc3dsGetVersion(void);

#ifdef __cplusplus
}
#endif

#endif
