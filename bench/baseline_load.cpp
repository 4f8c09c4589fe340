#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>

#include "baseline.h"
#include "reader/chunks.h"

struct Reader {
    FILE *stream;
    uint32_t position;
    Mc3dsFile *scene;
    uint32_t objectRoom;
    Mc3dsObject nobody;
    Mc3dsObject *object;     // of the current mesh or node
    Mc3dsMaterial *material; // current
    float *numbers;          // destination of the next colour or percentage
    std::unordered_map<std::string, uint32_t> objects;
    std::unordered_map<std::string, int32_t> materials;
};

template <class Number>
static Number Get(Reader *reader)
{
    Number number;
    reader->position += sizeof number;
    if (std::fread(&number, sizeof number, 1, reader->stream) != 1)
        std::memset(&number, 0xFF, sizeof number);
    return number;
}

static void GetFloats(Reader *reader, float *numbers, int count)
{
    for (int i = 0; i < count; ++i)
        numbers[i] = Get<float>(reader);
}

template <size_t size>
static void GetText(Reader *reader, char (&field)[size])
{
    size_t length = 0;
    for (char c; (c = Get<char>(reader)) != '\0' && length < size - 1;)
        field[length++] = c;
    field[length] = '\0';
}

template <class Entry>
static Entry *Grow(Entry *array, size_t count)
{
    return static_cast<Entry *>(std::realloc(static_cast<void *>(array), count * sizeof(Entry)));
}

// Reads numbers of a vertex; entry is their index in the bounds.
static void GetVertexNumbers(Reader *reader, float *numbers, int entry, int count)
{
    GetFloats(reader, numbers, count);
    for (int i = 0; i < count; ++i) {
        float *low = &reader->object->boundsMin[entry + i], *high = &reader->object->boundsMax[entry + i];
        *low = numbers[i] < *low ? numbers[i] : *low;
        *high = numbers[i] > *high ? numbers[i] : *high;
    }
}

static void GetVertices(Reader *reader, Mc3dsObject *object)
{
    object->vertexCount = Get<uint16_t>(reader);
    object->vertices = Grow(object->vertices, static_cast<size_t>(object->vertexCount));
    for (int32_t i = 0; i < object->vertexCount; ++i)
        GetVertexNumbers(reader, &object->vertices[i].x, 0, 3);
}

static void GetTexture(Reader *reader, Mc3dsObject *object)
{
    object->hasTexture = Get<uint16_t>(reader) == object->vertexCount;
    for (int32_t i = 0; i < object->vertexCount && object->hasTexture; ++i)
        GetVertexNumbers(reader, &object->vertices[i].u, 3, 2);
}

static void GetFaces(Reader *reader, Mc3dsObject *object)
{
    object->faceCount = Get<uint16_t>(reader);
    object->faces = Grow(object->faces, static_cast<size_t>(object->faceCount));
    for (int32_t i = 0; i < object->faceCount; ++i) {
        uint16_t corners[4];
        for (uint16_t &corner : corners)
            corner = Get<uint16_t>(reader);
        object->faces[i] = {corners[0], corners[1], corners[2], 0};
    }
}

static void GetGroup(Reader *reader, Mc3dsObject *object)
{
    char name[20];
    GetText(reader, name);
    const int32_t material = reader->materials.at(name);
    const uint32_t count = Get<uint16_t>(reader);
    if (count == 0)
        return;
    auto *faces = Grow<uint32_t>(nullptr, count);
    for (uint32_t i = 0; i < count; ++i) {
        faces[i] = Get<uint16_t>(reader);
        object->faces[faces[i]].material = material;
    }
    object->groups = Grow(object->groups, object->groupCount + 1);
    object->groups[object->groupCount++] = {material, count, faces, 0};
}

static void AddObject(Reader *reader)
{
    Mc3dsFile *scene = reader->scene;
    char name[12];
    GetText(reader, name);
    if (scene->objectCount == reader->objectRoom)
        scene->objects = Grow(scene->objects, reader->objectRoom = reader->objectRoom * 2 + 8);
    reader->objects.emplace(name, scene->objectCount);
    reader->object = &scene->objects[scene->objectCount++];
    Mc3dsObjectInit(reader->object, name);
}

static void MoveToObjectSpace(Mc3dsObject *object)
{
    Mc3dsTransform inverse;
    Mc3dsTransformInvert(&object->meshMatrix, &inverse);
    for (int32_t i = 0; i < object->vertexCount; ++i) {
        Mc3dsVertex *vertex = &object->vertices[i];
        const float in[3] = {vertex->x, vertex->y, vertex->z};
        Mc3dsTransformPoint(in, &inverse, &vertex->x);
    }
}

static void AddMaterial(Reader *reader, const Mc3dsMaterial &material)
{
    Mc3dsFile *scene = reader->scene;
    scene->materials = Grow(scene->materials, static_cast<size_t>(scene->materialCount) + 1);
    reader->material = &scene->materials[scene->materialCount++];
    *reader->material = material;
}

template <class Key>
static void GetTrack(Reader *reader, uint32_t *count, Key **keys)
{
    for (int i = 0; i < 5; ++i)
        Get<uint16_t>(reader);
    *count = Get<uint32_t>(reader);
    *keys = Grow(*keys, *count);
    for (Key *key = *keys; key < *keys + *count; ++key) {
        key->frame = Get<uint32_t>(reader);
        for (unsigned flags = Get<uint16_t>(reader) & 0x1Fu; flags != 0; flags &= flags - 1)
            Get<uint32_t>(reader);
        GetFloats(reader, reinterpret_cast<float *>(key) + 1, sizeof(Key) / 4 - 1);
    }
}

static void GetNodeHeader(Reader *reader)
{
    char name[12];
    GetText(reader, name);
    reader->object = &reader->scene->objects[reader->objects.at(name)];
    Get<uint32_t>(reader);
    reader->object->parentNode = Get<uint16_t>(reader);
    reader->object->nodeId = static_cast<int32_t>(reader->scene->nodeCounter++);
}

static void ShiftByPivot(const Mc3dsObject *object, Mc3dsTransform *m)
{
    const Mc3dsTransform before = *m;
    Mc3dsTransform shift;
    Mc3dsTransformTranslation(object->pivot, &shift);
    Mc3dsTransformMultiply(&shift, &before, m);
}

static void GetPivot(Reader *reader, Mc3dsObject *object)
{
    GetFloats(reader, object->pivot, 3);
    ShiftByPivot(object, &object->meshMatrix);
    for (int32_t i = 0; i < object->vertexCount; ++i) {
        object->vertices[i].x -= object->pivot[0];
        object->vertices[i].y -= object->pivot[1];
        object->vertices[i].z -= object->pivot[2];
    }
}

static void GetMaterialName(Reader *reader)
{
    GetText(reader, reader->material->name);
    reader->materials.emplace(reader->material->name, reader->scene->materialCount - 1);
}

static void GetColour(Reader *reader)
{
    for (int i = 0; i < 3; ++i)
        reader->numbers[i] = static_cast<float>(Get<uint8_t>(reader) * static_cast<double>(0.003921569f));
}

static void GetMeshMatrix(Reader *reader, Mc3dsTransform *matrix)
{
    for (int i = 0; i < 12; ++i)
        matrix->m[i / 3][i % 3] = Get<float>(reader);
}

static void GetFrameCount(Reader *reader)
{
    Get<uint16_t>(reader);
    GetText(reader, reader->nobody.name);
    reader->scene->frameCount = Get<uint32_t>(reader);
}

// Reads the data of a chunk before its children. False for a chunk without children.
static bool GetParent(Reader *reader, uint16_t tag)
{
    Mc3dsMaterial *material = reader->material;
    switch (tag) {
    case M3DMAGIC:
    case MDATA:
    case KFDATA:
    case N_TRI_OBJECT:
    case OBJECT_NODE_TAG: return true;
    case NAMED_OBJECT: AddObject(reader); return true;
    case FACE_ARRAY: GetFaces(reader, reader->object); return true;
    case MAT_ENTRY: AddMaterial(reader, {}); return true;
    case MAT_AMBIENT: reader->numbers = material->ambient; return true;
    case MAT_DIFFUSE: reader->numbers = material->diffuse; return true;
    case MAT_SPECULAR: reader->numbers = material->specular; return true;
    case MAT_SHININESS: reader->numbers = &material->shininess; return true;
    case MAT_TRANSPARENCY: reader->numbers = &material->transparency; return true;
    case MAT_TEXMAP: reader->numbers = reader->nobody.pivot; return true; // its strength is discarded
    default: return false;
    }
}

static void GetChild(Reader *reader, uint16_t tag)
{
    Mc3dsObject *object = reader->object;
    switch (tag) {
    case MAT_NAME: GetMaterialName(reader); break;
    case MAT_SHADING: reader->material->shading = Get<uint16_t>(reader) + 1; break;
    case MAT_MAPNAME: GetText(reader, reader->material->textureMap); break;
    case COLOR_24: GetColour(reader); break;
    case INT_PERCENTAGE:
        *reader->numbers = static_cast<float>(Get<uint16_t>(reader) * static_cast<double>(0.01f));
        break;
    case POINT_ARRAY: GetVertices(reader, object); break;
    case TEX_VERTS: GetTexture(reader, object); break;
    case MSH_MAT_GROUP: GetGroup(reader, object); break;
    case MESH_MATRIX: GetMeshMatrix(reader, &object->meshMatrix); break;
    case KFHDR: GetFrameCount(reader); break;
    case NODE_HDR: GetNodeHeader(reader); break;
    case PIVOT: GetPivot(reader, object); break;
    case POS_TRACK_TAG: GetTrack(reader, &object->positionKeyCount, &object->positionKeys); break;
    case ROT_TRACK_TAG: GetTrack(reader, &object->rotationKeyCount, &object->rotationKeys); break;
    case SCL_TRACK_TAG: GetTrack(reader, &object->scaleKeyCount, &object->scaleKeys); break;
    default: break;
    }
}

static void GetChunks(Reader *reader, uint32_t end)
{
    while (reader->position < end) {
        const uint32_t start = reader->position;
        const auto tag = Get<uint16_t>(reader);
        const uint32_t next = start + Get<uint32_t>(reader);
        if (GetParent(reader, tag))
            GetChunks(reader, next);
        else
            GetChild(reader, tag);
        if (tag == N_TRI_OBJECT)
            MoveToObjectSpace(reader->object);
        // Seeks to the end of the chunk, wherever its reader stopped.
        fseeko(reader->stream, reader->position = next, SEEK_SET);
    }
}

static void ScanVue(Reader *reader)
{
    int frame = 0;
    for (char keyword[16], name[32]; std::fscanf(reader->stream, "%15s", keyword) == 1;) {
        if (std::strcmp(keyword, "frame") == 0) {
            if (std::fscanf(reader->stream, "%d", &frame) != 1)
                return;
            continue;
        }
        double m[12];
        if (std::fscanf(reader->stream, " \"%31[^\"]\" %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf %lf", name,
                        m, m + 1, m + 2, m + 3, m + 4, m + 5, m + 6, m + 7, m + 8, m + 9, m + 10,
                        m + 11) != 13)
            return;
        Mc3dsObject *object = &reader->scene->objects[reader->objects.at(name)];
        object->hasFrames = 1;
        std::memcpy(object->frames[frame].m, m, sizeof m);
    }
}

static void GetVue(Reader *reader, std::string path)
{
    Mc3dsFile *scene = reader->scene;
    const size_t count = size_t{scene->frameCount} + 1;
    reader->stream = std::fopen(path.replace(path.size() - 3, 3, "vue").c_str(), "r");
    if (!reader->stream)
        return;
    for (Mc3dsObject *object = scene->objects; object < scene->objects + scene->objectCount; ++object) {
        object->frames = Grow(object->frames, count);
        for (size_t frame = 0; frame < count; ++frame)
            Mc3dsTransformIdentity(&object->frames[frame]);
    }
    ScanVue(reader);
    std::fclose(reader->stream);
    scene->hasAnimation = 1;
    for (Mc3dsObject *object = scene->objects; object < scene->objects + scene->objectCount; ++object)
        for (size_t frame = 0; frame < count; ++frame)
            ShiftByPivot(object, &object->frames[frame]);
}

Mc3dsFile *BaselineLoad(const char *path)
{
    Reader reader = {};
    reader.stream = std::fopen(path, "rb");
    if (!reader.stream)
        return nullptr;
    Mc3dsFile *scene = reader.scene = static_cast<Mc3dsFile *>(std::calloc(1, sizeof(Mc3dsFile)));
    std::snprintf(scene->fileName, sizeof scene->fileName, "%s", path);
    AddMaterial(&reader, {"default", {0, 1, 0}, {0, 1, 0}, {0, 1, 0}, 2, 0, 0, "", "", ""});
    fseeko(reader.stream, 0, SEEK_END);
    const auto size = static_cast<uint32_t>(ftello(reader.stream));
    std::rewind(reader.stream);
    GetChunks(&reader, size);
    std::fclose(reader.stream);
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        scene->rootCount += scene->objects[i].parentNode == 0xFFFF;
    if (scene->frameCount != 0)
        GetVue(&reader, path);
    return scene;
}

void BaselineFree(Mc3dsFile *scene)
{
    for (Mc3dsObject *object = scene->objects; object < scene->objects + scene->objectCount; ++object) {
        for (uint32_t i = 0; i < object->groupCount; ++i)
            std::free(object->groups[i].faces);
        std::free(object->groups);
        std::free(object->vertices);
        std::free(object->faces);
        std::free(object->positionKeys);
        std::free(object->rotationKeys);
        std::free(object->scaleKeys);
        std::free(object->frames);
    }
    std::free(scene->objects);
    std::free(scene->materials);
    std::free(scene);
}
