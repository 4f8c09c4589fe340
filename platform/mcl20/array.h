// A growing array of plain records. Unlike std::vector it grows in place where the system can (the meshes are
// the bulk of a model's memory) and reports lack of memory by its result.
#ifndef MCL_ARRAY_H
#define MCL_ARRAY_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

template <typename T>
struct McmArray {
    T *items;
    size_t count;
    size_t capacity;
};

template <typename T>
bool McmResizeStorage(McmArray<T> *array, size_t capacity)
{
    static_assert(std::is_trivially_copyable_v<T>);
    if (capacity > SIZE_MAX / sizeof(T))
        return false;
    void *items = std::realloc(static_cast<void *>(array->items), capacity * sizeof(T));
    if (!items)
        return false;
    array->items = static_cast<T *>(items);
    array->capacity = capacity;
    return true;
}

// Makes room for one more entry. False, with the array unchanged, if out of memory.
template <typename T>
bool McmReserveOne(McmArray<T> *array)
{
    return array->count < array->capacity || McmResizeStorage(array, array->count + array->count / 2 + 8);
}

template <typename T>
bool McmAppend(McmArray<T> *array, const T &item)
{
    if (!McmReserveOne(array))
        return false;
    array->items[array->count++] = item;
    return true;
}

// Releases unused capacity. If that fails, the array keeps it.
template <typename T>
void McmTrim(McmArray<T> *array)
{
    if (array->count > 0 && array->count < array->capacity)
        McmResizeStorage(array, array->count);
}

template <typename T>
void McmRelease(McmArray<T> *array)
{
    std::free(array->items);
    *array = {};
}

#endif
