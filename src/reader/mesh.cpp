#include <cstdlib>
#include <cstring>

#include "chunks.h"
#include "reader.h"

// Null, with a report, if out of memory or the file can't hold that many entries.
static void *AllocateArray(Mc3dsFile *file, size_t count, size_t sizeInFile, size_t sizeInScene,
                           const char *outOfMemory)
{
    if (!Mc3dsMayRead(file, count * sizeInFile))
        return nullptr;
    void *array = Mc3dsResize(nullptr, count, sizeInScene);
    if (!array)
        Mc3dsError(0, Mc3dsReportKind::OutOfMemory, "%s", outOfMemory);
    return array;
}

static const char noMemoryForGroup[] = "malloc failed allocating Material Group";

constexpr int blockSize = 256;

static int NextBlock(int done, int count)
{
    return count - done < blockSize ? count - done : blockSize;
}

static void GrowBounds(float value, float *low, float *high)
{
    *high = value > *high ? value : *high;
    *low = value < *low ? value : *low;
}

// A second POINT_ARRAY replaces the first; the bounds still include the first.
static void DropVertices(Mc3dsObject *object)
{
    if (object->vertexCount != 0)
        std::free(object->vertices);
    object->vertexCount = 0;
    object->hasTexture = 0;
}

static void DropFaces(Mc3dsObject *object)
{
    for (uint32_t i = 0; i < object->groupCount; ++i)
        std::free(object->groups[i].faces);
    if (object->groupCount != 0)
        std::free(object->groups);
    object->groupCount = 0;
    if (object->faceCount != 0)
        std::free(object->faces);
    object->faceCount = 0;
}

static void Mc3dsReadVertices(Mc3dsFile *file, Mc3dsObject *object)
{
    DropVertices(object);
    const uint16_t count = Mc3dsReadU16(file);
    Mc3dsMessageOf(Mc3dsReportKind::ReadingArray, 2, uint64_t{count} * 12, "Reading %d vertices", count);
    if (count == 0)
        return;
    void *array =
        AllocateArray(file, count, 12, sizeof(Mc3dsVertex), "Out of memory allocating vertex array");
    if (!array)
        return;
    object->vertices = static_cast<Mc3dsVertex *>(array);
    object->vertexCount = count;
    float low[3], high[3];
    std::memcpy(low, object->boundsMin, sizeof low);
    std::memcpy(high, object->boundsMax, sizeof high);
    for (int done = 0, block; done < count; done += block) {
        float positions[3 * blockSize];
        block = NextBlock(done, count);
        Mc3dsReadFloats(file, positions, 3 * static_cast<size_t>(block));
        Mc3dsVertex *vertices = object->vertices + done;
        for (int i = 0; i < block; ++i) {
            const float *position = positions + 3 * i;
            vertices[i] = {position[0], position[1], position[2], 0.0f, 0.0f};
            for (int axis = 0; axis < 3; ++axis)
                GrowBounds(position[axis], &low[axis], &high[axis]);
        }
    }
    std::memcpy(object->boundsMin, low, sizeof low);
    std::memcpy(object->boundsMax, high, sizeof high);
}

// True for -8.507059e37 and below, -infinity and negative NaNs; never for positive values.
static bool IsInvalidTexture(float value)
{
    uint32_t pattern;
    std::memcpy(&pattern, &value, sizeof pattern);
    return pattern > 0xFE7FFFFF;
}

static void Mc3dsReadTextureVertices(Mc3dsFile *file, Mc3dsObject *object)
{
    const uint16_t count = Mc3dsReadU16(file);
    if (count != object->vertexCount) {
        Mc3dsError(1, Mc3dsReportKind::TextureCountDiffers,
                   "No of Texture Vertices does not match actual vertices");
        return;
    }
    Mc3dsMessageOf(Mc3dsReportKind::ReadingArray, 2, uint64_t{count} * 8, "Reading %d texture vertices",
                   count);
    if (count == 0 || !Mc3dsMayRead(file, uint64_t{count} * 8))
        return;
    object->hasTexture = 1;
    float low[2], high[2];
    std::memcpy(low, object->boundsMin + 3, sizeof low);
    std::memcpy(high, object->boundsMax + 3, sizeof high);
    for (int done = 0, block; done < count; done += block) {
        float uvs[2 * blockSize];
        block = NextBlock(done, count);
        Mc3dsReadFloats(file, uvs, 2 * static_cast<size_t>(block));
        for (int i = 0; i < block; ++i) {
            float u = uvs[2 * i], v = uvs[2 * i + 1];
            if (IsInvalidTexture(u) || IsInvalidTexture(v))
                u = v = 0.0f;
            object->vertices[done + i].u = u;
            object->vertices[done + i].v = v;
            GrowBounds(u, &low[0], &high[0]);
            GrowBounds(v, &low[1], &high[1]);
        }
    }
    std::memcpy(object->boundsMin + 3, low, sizeof low);
    std::memcpy(object->boundsMax + 3, high, sizeof high);
    Mc3dsMessage(2, "Minimum texture coordinate (%f, %f)", static_cast<double>(low[0]),
                 static_cast<double>(low[1]));
    Mc3dsMessage(2, "Maximum texture coordinate (%f, %f)", static_cast<double>(high[0]),
                 static_cast<double>(high[1]));
}

// The default material is not compared: a group that names "default" gets index 0 as well.
static int32_t FindMaterial(Mc3dsFile *file, const char *name)
{
    const auto count = static_cast<uint32_t>(file->materialCount) - 1;
    const uint32_t index =
        Mc3dsFindName(&file->load->materialNames, file->materials + 1, sizeof *file->materials, count, name);
    return index < count ? static_cast<int32_t>(index + 1) : 0;
}

static bool MakeRoomForGroup(Mc3dsObject *object)
{
    void *groups = Mc3dsResize(object->groupCount != 0 ? object->groups : nullptr,
                               uint64_t{object->groupCount} + 1, sizeof *object->groups);
    if (!groups) {
        Mc3dsError(0, Mc3dsReportKind::OutOfMemory, "%s", noMemoryForGroup);
        return false;
    }
    object->groups = static_cast<Mc3dsMaterialGroup *>(groups);
    return true;
}

static void ReadGroupFaces(Mc3dsFile *file, Mc3dsObject *object, Mc3dsMaterialGroup *group, int count)
{
    for (int done = 0, block; done < count; done += block) {
        uint16_t faces[blockSize];
        block = NextBlock(done, count);
        Mc3dsReadU16s(file, faces, static_cast<size_t>(block));
        for (int i = 0; i < block; ++i) {
            if (faces[i] >= object->faceCount)
                continue;
            group->faces[group->count++] = faces[i];
            object->faces[faces[i]].material = group->material;
        }
    }
}

// True if face numbers beyond the object's faces were dropped from the group.
static bool Mc3dsReadMaterialGroup(Mc3dsFile *file, Mc3dsObject *object)
{
    char name[20];
    Mc3dsCopyText(name, sizeof name, Mc3dsReadString(file), "Material name");
    const uint16_t count = Mc3dsReadU16(file);
    if (count == 0)
        return false;
    void *array = AllocateArray(file, count, 2, sizeof(uint32_t), noMemoryForGroup);
    // Before the faces are read: a discarded group must not change their material.
    if (!array || !MakeRoomForGroup(object)) {
        std::free(array);
        return false;
    }
    Mc3dsMaterialGroup group = {FindMaterial(file, name), 0, static_cast<uint32_t *>(array), 0};
    if (group.material == 0) {
        const uint32_t lost = Mc3dsLoseMaterial(file, name, nullptr);
        group.lost = lost < file->lostMaterialCount ? lost + 1 : 0;
    }
    ReadGroupFaces(file, object, &group, count);
    if (group.count != 0) {
        object->groups[object->groupCount++] = group;
    } else {
        std::free(group.faces);
        if (object->groupCount == 0)
            std::free(object->groups);
    }
    return group.count < count;
}

static bool ReadFaces(Mc3dsFile *file, const Mc3dsChunk *chunk, Mc3dsObject *object)
{
    DropFaces(object);
    const uint16_t count = Mc3dsReadU16(file);
    Mc3dsMessageOf(Mc3dsReportKind::ReadingArray, 2, uint64_t{count} * 8, "Reading %d faces", count);
    if (count == 0)
        return false;
    void *array = AllocateArray(file, count, 8, sizeof(Mc3dsFace), "Out of memory allocating faces");
    if (!array)
        return false;
    object->faces = static_cast<Mc3dsFace *>(array);
    object->faceCount = count;
    for (int done = 0, block; done < count; done += block) {
        uint16_t numbers[4 * blockSize]; // the fourth of each face holds its edge flags
        block = NextBlock(done, count);
        Mc3dsReadU16s(file, numbers, 4 * static_cast<size_t>(block));
        for (int i = 0; i < block; ++i)
            object->faces[done + i] = {numbers[4 * i], numbers[4 * i + 1], numbers[4 * i + 2], 0};
    }
    bool dropped = false;
    for (Mc3dsChunk child = {}; Mc3dsNextChunk(file, chunk, &child);)
        if (child.tag == MSH_MAT_GROUP && Mc3dsReadMaterialGroup(file, object))
            dropped = true;
    return dropped;
}

static bool HasInvalidFace(const Mc3dsObject *object)
{
    const auto limit = static_cast<uint32_t>(object->vertexCount);
    for (int32_t i = 0; i < object->faceCount; ++i) {
        const Mc3dsFace &face = object->faces[i];
        if (face.a >= limit || face.b >= limit || face.c >= limit)
            return true;
    }
    return false;
}

// The file has vertices in world space.
static void MoveToObjectSpace(Mc3dsObject *object)
{
    Mc3dsTransform inverse;
    if (Mc3dsTransformInvert(&object->meshMatrix, &inverse) == 0.0)
        Mc3dsError(0, Mc3dsReportKind::NoInverse, "Failed to invert matrix");
    for (int32_t i = 0; i < object->vertexCount; ++i) {
        Mc3dsVertex &vertex = object->vertices[i];
        const float in[3] = {vertex.x, vertex.y, vertex.z};
        float out[3];
        Mc3dsTransformPoint(in, &inverse, out);
        vertex.x = out[0];
        vertex.y = out[1];
        vertex.z = out[2];
    }
}

static void ReadMeshMatrix(Mc3dsFile *file, Mc3dsTransform *matrix)
{
    float numbers[12];
    Mc3dsReadFloats(file, numbers, 12);
    for (int i = 0; i < 12; ++i)
        matrix->m[i / 3][i % 3] = numbers[i];
}

bool Mc3dsReadMesh(Mc3dsFile *file, const Mc3dsChunk *chunk, const char *name)
{
    Mc3dsObject object;
    Mc3dsObjectInit(&object, name);
    bool facesDropped = false;
    for (Mc3dsChunk child = {}; Mc3dsNextChunk(file, chunk, &child);) {
        switch (child.tag) {
        case POINT_ARRAY: Mc3dsReadVertices(file, &object); break;
        case POINT_FLAG_ARRAY: break;
        case FACE_ARRAY:
            if (ReadFaces(file, &child, &object))
                facesDropped = true;
            break;
        case TEX_VERTS: Mc3dsReadTextureVertices(file, &object); break;
        case MESH_MATRIX: ReadMeshMatrix(file, &object.meshMatrix); break;
        default: Mc3dsIgnoreChunk(file, child.tag);
        }
    }
    if (facesDropped || HasInvalidFace(&object))
        Mc3dsError(1, Mc3dsReportKind::FaceOutside,
                   "Mesh <%s> has faces or face numbers outside its arrays, which outputs leave out", name);
    MoveToObjectSpace(&object);
    if (Mc3dsAddObject(file, &object))
        return true;
    Mc3dsObjectFree(&object);
    return false;
}
