#include <cstdlib>
#include <cstring>

#include "reader.h"

// Pivots of one object whose vertices are moved at once. More than these come from no modeller, but a damaged
// file may move the same mesh thousands of times; then they wait for the end of the load, when each vertex
// takes them all in turn without leaving its register.
constexpr uint32_t directPivots = 8;

static void MoveOnce(Mc3dsObject *object, const float pivot[3])
{
    for (int32_t i = 0; i < object->vertexCount; ++i) {
        object->vertices[i].x -= pivot[0];
        object->vertices[i].y -= pivot[1];
        object->vertices[i].z -= pivot[2];
    }
}

// blockSize vertices at a time have all their co-ordinates in registers.
template <int blockSize>
[[gnu::always_inline]] static inline void MoveBlocks(Mc3dsObject *object, const float (*pivots)[3],
                                                     uint32_t count)
{
    for (int32_t done = 0; done < object->vertexCount; done += blockSize) {
        Mc3dsVertex *vertices = object->vertices + done;
        const int block = object->vertexCount - done < blockSize ? object->vertexCount - done : blockSize;
        float x[blockSize] = {}, y[blockSize] = {}, z[blockSize] = {};
        for (int i = 0; i < block; ++i) {
            x[i] = vertices[i].x;
            y[i] = vertices[i].y;
            z[i] = vertices[i].z;
        }
        for (uint32_t pivot = 0; pivot < count; ++pivot) {
            const float px = pivots[pivot][0], py = pivots[pivot][1], pz = pivots[pivot][2];
            for (int i = 0; i < blockSize; ++i) {
                x[i] -= px;
                y[i] -= py;
                z[i] -= pz;
            }
        }
        for (int i = 0; i < block; ++i) {
            vertices[i].x = x[i];
            vertices[i].y = y[i];
            vertices[i].z = z[i];
        }
    }
}

#if defined(__x86_64__) && !defined(_WIN32)
// The same on processors whose registers hold twice as much.
__attribute__((target("avx"))) static void MoveWideBlocks(Mc3dsObject *object, const float (*pivots)[3],
                                                          uint32_t count)
{
    MoveBlocks<32>(object, pivots, count);
}
#endif

static void MoveOften(Mc3dsObject *object, const float (*pivots)[3], uint32_t count)
{
#if defined(__x86_64__) && !defined(_WIN32)
    if (__builtin_cpu_supports("avx")) {
        MoveWideBlocks(object, pivots, count);
        return;
    }
#endif
    MoveBlocks<16>(object, pivots, count);
}

// False when there is no memory.
static bool Queue(Mc3dsObject *object)
{
    if (object->waitingPivotCount == object->waitingPivotCapacity) {
        const uint64_t capacity = uint64_t{object->waitingPivotCapacity} * 2 + 16;
        void *grown = Mc3dsResize(object->waitingPivots, capacity, sizeof *object->waitingPivots);
        if (!grown)
            return false;
        object->waitingPivots = static_cast<float(*)[3]>(grown);
        object->waitingPivotCapacity = static_cast<uint32_t>(capacity);
    }
    std::memcpy(object->waitingPivots[object->waitingPivotCount++], object->pivot, sizeof object->pivot);
    return true;
}

void Mc3dsApplyPivot(Mc3dsObject *object)
{
    Mc3dsTransform shift, moved;
    Mc3dsTransformTranslation(object->pivot, &shift);
    Mc3dsTransformMultiply(&shift, &object->meshMatrix, &moved);
    object->meshMatrix = moved;
    if (object->pivotsApplied < directPivots || !Queue(object)) {
        Mc3dsApplyWaitingPivots(object);
        MoveOnce(object, object->pivot);
        ++object->pivotsApplied;
    }
}

void Mc3dsApplyWaitingPivots(Mc3dsObject *object)
{
    if (object->waitingPivotCount == 0)
        return;
    MoveOften(object, object->waitingPivots, object->waitingPivotCount);
    std::free(object->waitingPivots);
    object->waitingPivots = nullptr;
    object->waitingPivotCount = object->waitingPivotCapacity = 0;
}
