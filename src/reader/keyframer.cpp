#include "chunks.h"
#include "reader.h"

static void ReadSegment(Mc3dsFile *file)
{
    Mc3dsMessage(2, "Key Frame Segment");
    Mc3dsMessage(2, "\tfirst %d", static_cast<int32_t>(Mc3dsReadU32(file)));
    Mc3dsMessage(2, "\tlast %d", static_cast<int32_t>(Mc3dsReadU32(file)));
}

static void ReadCurrentTime(Mc3dsFile *file)
{
    Mc3dsMessage(2, "Key Frame Current Time");
    Mc3dsMessage(2, "\tframe %d", static_cast<int32_t>(Mc3dsReadU32(file)));
}

static void ReadHeader(Mc3dsFile *file)
{
    Mc3dsMessage(2, "Key Frame Header");
    Mc3dsMessage(2, "\tVersion %d", Mc3dsReadU16(file));
    Mc3dsMessage(2, "\tString %s", Mc3dsReadString(file));
    file->frameCount = Mc3dsReadU32(file);
    Mc3dsMessage(2, "\tFrames %d", static_cast<int32_t>(file->frameCount));
}

// Reports a node that is counted but skipped. False for other chunks.
static bool SkipNode(Mc3dsFile *file, uint16_t tag)
{
    switch (tag) {
    case CAMERA_NODE_TAG:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::CameraNode, 2, "CAMERA_NODE_TAG ... skipping");
        return true;
    case TARGET_NODE_TAG:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::CameraTargetNode, 2, "TARGET_NODE_TAG ... skipping");
        return true;
    case LIGHT_NODE_TAG:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::LightNode, 2, "LIGHT_NODE_TAG ... skipping");
        return true;
    case L_TARGET_NODE_TAG:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::LightTargetNode, 1, "L_TARGET_NODE_TAG ... skipping");
        return true;
    case SPOTLIGHT_NODE_TAG:
        Mc3dsSkipUnsupported(file, Mc3dsUnsupported::SpotlightNode, 2, "SPOTLIGHT_NODE_TAG ... skipping");
        return true;
    default: return false;
    }
}

void Mc3dsReadKeyframer(Mc3dsFile *file, const Mc3dsChunk *chunk)
{
    for (Mc3dsChunk child = {}; Mc3dsNextChunk(file, chunk, &child);) {
        switch (child.tag) {
        case OBJECT_NODE_TAG:
            Mc3dsReadObjectNode(file, &child);
            ++file->nodeCounter;
            break;
        case KFSEG: ReadSegment(file); break;
        case KFCURTIME: ReadCurrentTime(file); break;
        case KFHDR: ReadHeader(file); break;
        default:
            // AMBIENT_NODE_TAG is not counted: it takes no node number.
            if (SkipNode(file, child.tag))
                ++file->nodeCounter;
            else
                Mc3dsIgnoreChunk(file, child.tag);
        }
    }
}
