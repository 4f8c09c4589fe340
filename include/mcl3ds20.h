/*
 * MCL3DS20: 3D Studio scenes for the Meshcaster renderer.
 *
 *   1. Mc3dsSetErrorCallback and Mc3dsSetMessageCallback install your functions for reports. The library
 *      prints nothing on its own.
 *   2. Mc3dsLoadFile reads a .3DS file, and the .vue animation beside it, into a scene.
 *   3. Fill an Mc3dsOptions (zero it first) and pass it to Mc3dsOutput with the scene, as often as needed. It
 *      writes a .mcx script, or C source with MC3DS_SOURCE, or builds the model with MC3DS_DIRECT.
 *   4. Mc3dsUnloadFile frees the scene.
 *
 * Make one call at a time: the library takes no locks, and callbacks must not call it. The host's locale has
 * no effect: numbers in files and reports always have a decimal point.
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

/* A clump of the Meshcaster library. Opaque; that library defines what can be done with it. */
struct McClump;

/*
 * A function of the host that receives reports.
 *   level  error channel: 0 bad data or out of memory, 1 a file or an item is discarded, 2 a warning;
 *          message channel: 0 a file is started, 1 an object or material is added or removed, 2 detail.
 *   text   NUL-terminated, at most 255 bytes, possibly empty. It has no line feed at its end; three messages
 *          have one at their start, as an empty line before a new subject. The library owns the text and
 *          overwrites it with the next report: copy it to keep it.
 * The function receives the reports of all levels. A report doesn't affect what the library does next.
 * Exceptions that the function throws are discarded. A thread may end inside it (pthread_exit, cancellation);
 * the memory and the files of the library call are then never released.
 */
typedef void (*Mc3dsCallback)(int32_t level, const char *text);

/* Bits of Mc3dsOptions.flags. Other bits are ignored. */
#define MC3DS_ANIMATION 0x001u  /* write animationFile if there are frames; place objects as in frame 0 */
#define MC3DS_HEADER 0x002u     /* write headerFile */
#define MC3DS_SOURCE 0x004u     /* write C source instead of script text */
#define MC3DS_PROTOS 0x008u     /* write geometry once, as prototypes; the tree has instances */
#define MC3DS_FLAT 0x010u       /* all objects on one level, with absolute transforms */
#define MC3DS_MERGED 0x020u     /* all objects in one clump */
#define MC3DS_PER_OBJECT 0x040u /* one file for each object; no header and no animation file */
#define MC3DS_FIT_SIZE 0x080u   /* compute scale from size; without it, size from scale */
#define MC3DS_CENTRE 0x100u     /* shift the middle of the scene's bounds to the origin */
#define MC3DS_DIRECT 0x200u     /* build the model by library calls, no file; overrides all other forms */
#define MC3DS_OPACITY 0x400u    /* transparent materials get the opacity of the options */

/* Bits of Mc3dsOptions.surfaceFlags. */
#define MC3DS_TEXTURES 0x01u            /* keep textures; without it their names are only in comments */
#define MC3DS_TEXTURE_EXTENSION 0x02u   /* replace the extension of texture names by textureExtension */
#define MC3DS_TEXTURE_LIT 0x04u         /* texture mode Lit */
#define MC3DS_TEXTURE_FILTER 0x08u      /* texture mode Filter */
#define MC3DS_TEXTURE_FORESHORTEN 0x10u /* texture mode Foreshorten */

/* Bits of Mc3dsOptions.hintFlags. */
#define MC3DS_HINT_HS 0x1u       /* the hint HS */
#define MC3DS_HINT_EDITABLE 0x2u /* the hint EDITABLE */

/*
 * Input of one Mc3dsOutput. The host owns the record and its texts; the library keeps no pointer to them
 * after the call. A null text counts as empty. Only scale or size is written back: MC3DS_FIT_SIZE computes
 * scale from size, otherwise size is computed from scale. MC3DS_PER_OBJECT makes each path from at most six
 * characters of outputFile, the object's index and ".mcx".
 */
typedef struct Mc3dsOptions {
    uint32_t flags;               /* MC3DS_ bits: what to write and in which form */
    uint32_t surfaceFlags;        /* MC3DS_TEXTURE bits */
    uint32_t hintFlags;           /* MC3DS_HINT bits */
    const char *clumpName;        /* the C function is McBuild plus this; not checked to be an identifier */
    const char *outputFile;       /* path of the scene's file, named in every banner */
    const char *headerFile;       /* path of the header file, read with MC3DS_HEADER */
    const char *animationFile;    /* path of the animation file, read with MC3DS_ANIMATION */
    const char *textureExtension; /* for MC3DS_TEXTURE_EXTENSION, without the dot; empty: no extension */
    float scale;                  /* target units per file unit */
    float size;                   /* longest side of the scene's bounds in target units */
    float redWeight;              /* channels (0 to 1) times weights add up to one number of a surface */
    float greenWeight;            /* weights are any finite values, not normalised */
    float blueWeight;             /* 0.299, 0.587 and 0.114 give the luma of television */
    float opacity;                /* 0 to 1, not checked; read with MC3DS_OPACITY */
} Mc3dsOptions;

/*
 * Reads a scene from the 3D Studio file at path, and the .vue file beside it when the scene has frames.
 * Returns a scene that the caller owns, or null: the file can't be opened ("Unable to open file <%s>"),
 * is no 3D Studio file ("File is not a 3DS file"), memory for the empty scene is lacking, or path is null.
 * Damage inside the file never causes null: reports name what is discarded, the rest is in the scene.
 * A file that ends inside an array gives the elements that it has, without a report. To find this out,
 * compare the file's size with the length that its first chunk states, in bytes 2 to 5, little-endian.
 */
MC3DS_API Mc3dsFile *Mc3dsLoadFile(const char *path);

/* Frees a scene and everything it owns. The pointer is invalid afterwards. Null is ignored. */
MC3DS_API void Mc3dsUnloadFile(Mc3dsFile *file);

/*
 * Writes the scene according to the options. The scene isn't changed. Nothing is returned: files that can't
 * be opened are reported on the error channel at level 1; failed writes (a full disk) are not reported.
 *   options   scale or size is written back, unless the scene has no objects
 *   clumpOut  with MC3DS_DIRECT: receives the clump that ended last, the outermost one, owned by the
 *             Meshcaster library; null if none ended. Unchanged without MC3DS_DIRECT or if the scene has no
 *             objects. May be null.
 * Does nothing if file or options is null.
 */
MC3DS_API void Mc3dsOutput(const Mc3dsFile *file, Mc3dsOptions *options, struct McClump **clumpOut);

/*
 * Install the function that receives errors and warnings, or progress. Null turns the channel off. It
 * stays installed until another is set. Return the function installed before, null if none.
 */
MC3DS_API Mc3dsCallback Mc3dsSetErrorCallback(Mc3dsCallback callback);
MC3DS_API Mc3dsCallback Mc3dsSetMessageCallback(Mc3dsCallback callback);

/* The version text "3.0", which is after "V" in every banner. Constant; don't free it. */
MC3DS_API const char *Mc3dsGetVersion(void);

#ifdef __cplusplus
}
#endif

#endif
