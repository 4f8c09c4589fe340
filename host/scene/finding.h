// What the program finds out about a scene and its conversion, as data. words/sentences.cpp makes the text.
#ifndef MC3DS_HOST_FINDING_H
#define MC3DS_HOST_FINDING_H

#include <cstdint>
#include <string>
#include <vector>

#include "frame/frame.h"
#include "frame/report.h"

// The importance of a finding, highest first: parts of the scene are left out, the file is damaged, the
// result may differ from what was intended, a remark that is no warning.
enum class Weight : uint8_t { Loss, Damage, Doubt, Note };

enum class FindingKind : uint8_t {
    LibraryReport, // report: which one; detail: its text
    // What an output can't contain.
    OrphanObjects,   // count of `of` objects; names: the first
    LostPlacements,  // count meshes, `of` placements; names: the first mesh, which `most` nodes place
    BareFaces,       // count of `of` faces; names: materials that these faces name
    InvalidMaterial, // names: the material; count faces; detail: the library's reason
    NoAnimation,     // detail: why
    // Faults of the scene that the library doesn't report.
    CutFile,            // count of `of` bytes
    NotFiniteVertices,  // count; names: the object of the first
    NotFinitePlacement, // count; names: the first object
    NoExtent,
    ScaleTooLarge,
    SharedNames,  // count; names: the first
    SharedTags,   // as SharedNames
    InvalidTags,  // as SharedNames
    ScriptBreaks, // as SharedNames
    SourceBreaks, // as SharedNames
    // Faults of the model and of what is made from it.
    EmptyModel,   // count: triangles of the scene; of: 1 if --flat writes them
    RendererSaid, // count errors; detail: the first
    EmptyPicture, // detail: why
    NoPicture,    // detail: why
    NoStrip,
    OneProcess,
    // Notes.
    UnplayedKeys, // count objects; of: frames
    CoarsePicture,
    GlbBareFaces, // count
    GlbNearest,   // size: the largest distance in units of the file
    GlbMerged,
    GlbTextures,    // count; names: the first
    GlbPicture,     // names: the file; detail: why it isn't embedded
    TwinName,       // names: a scene, its output with a number, the scene that has the first name
    SkippedFiles,   // count; of: how many of them are pointers to large files; names: the first
    NothingToShow,  // names: the file that isn't written
    StandElsewhere, // count objects in frame 0 of the keyframer
    // What --restore did; names: of the materials or objects. Sentences of these are parts of one.
    RestoredMaterials,  // count
    RestoredPose,       // count objects
    RestoredParents,    // count objects
    RestoredPlacements, // count meshes; of: added ones
    RestoredKeys,       // count objects; of: frames
    RestoredEdges,      // count meshes; of: added vertices
    RestoredStrays,     // count meshes; of: removed vertices
    NotRestored,        // count; most: Mc3dsRestoreKind; of: Mc3dsRestoreLimit
};

struct NamedPart {
    std::string name;
    bool isLater = false; // a material that the file defines after the faces that name it
};

// Several findings of one kind (and of one report) in a scene are one warning, with the first one's text.
struct Finding {
    FindingKind kind;
    Weight weight = Weight::Doubt;
    Mc3dsReportKind report = Mc3dsReportKind::Detail;
    uint64_t times = 1; // how often it was met
    uint64_t count = 0, of = 0, most = 0;
    double size = 0.0;
    std::vector<NamedPart> names = {};
    std::string detail = {};
    bool isRestorable = false; // --restore would complete what is missing
};

#endif
