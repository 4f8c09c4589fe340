// What a scene has and no output shows.
#include "words.h"

static const char *NameOf(Mc3dsUnsupported what)
{
    switch (what) {
    case Mc3dsUnsupported::TransparencyFalloff: return "MAT_XPFALL - Transparency falloff";
    case Mc3dsUnsupported::ReflectionBlur: return "MAT_REFBLUR - Reflection blurring";
    case Mc3dsUnsupported::TwoSided: return "MAT_TWO_SIDE - Two sided materials";
    case Mc3dsUnsupported::Decal: return "MAT_DECAL - Material Decal";
    case Mc3dsUnsupported::BumpMap: return "MAT_BUMPMAP - Bump Maps";
    case Mc3dsUnsupported::AutomaticReflection: return "MAT_REFBLUR - Automatic Environment Maps";
    case Mc3dsUnsupported::MorphSmoothing: return "MORPH_SMOOTH";
    case Mc3dsUnsupported::MorphTrack: return "MORPH_TRACK_TAG";
    case Mc3dsUnsupported::CameraNode: return "CAMERA_NODE_TAG";
    case Mc3dsUnsupported::CameraTargetNode: return "TARGET_NODE_TAG";
    case Mc3dsUnsupported::LightNode: return "LIGHT_NODE_TAG";
    case Mc3dsUnsupported::LightTargetNode: return "L_TARGET_NODE_TAG";
    case Mc3dsUnsupported::SpotlightNode: return "SPOTLIGHT_NODE_TAG";
    }
    return "";
}

static std::string InHexadecimal(uint32_t tag)
{
    std::string text;
    do
        text.insert(text.begin(), "0123456789abcdef"[tag % 16]);
    while ((tag /= 16) != 0);
    return text;
}

LeftBehind FindLeftBehind(const Mc3dsFile *scene, bool isRestored)
{
    LeftBehind left;
    FindCutEnd(scene, &left.losses);
    FindLosses(scene, 0, &left.losses);
    FindSharedNames(scene, &left.losses);
    FindUnplayedKeys(scene, &left.losses);
    if (!isRestored)
        OfferRestoring(&left.losses);
    for (uint32_t i = 0; i < scene->skippedCount; ++i) {
        const Mc3dsSkippedObject &skipped = scene->skipped[i];
        switch (skipped.kind) {
        case Mc3dsSkippedKind::Light: left.lights.push_back(skipped.name); break;
        case Mc3dsSkippedKind::Camera: left.cameras.push_back(skipped.name); break;
        case Mc3dsSkippedKind::HiddenMesh: left.hidden.push_back(skipped.name); break;
        }
    }
    for (size_t i = 0; i < Mc3dsUnsupportedCount; ++i)
        if (scene->unsupported[i] != 0)
            left.unsupported[NameOf(static_cast<Mc3dsUnsupported>(i))] = scene->unsupported[i];
    for (uint32_t tag = 0; scene->unknownChunks && tag < Mc3dsTagCount; ++tag)
        if (scene->unknownChunks[tag] != 0)
            left.chunks[InHexadecimal(tag)] = scene->unknownChunks[tag];
    return left;
}
