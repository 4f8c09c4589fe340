// Packs a scene's result into bytes, to send it from a worker process to its parent.
#include <cstring>
#include <tuple>
#include <type_traits>

#include "result.h"

// The fields of a record that crosses. The bindings name all of them: a record with one more doesn't compile.
static auto FieldsOf(NamedPart &part)
{
    auto &[name, isLater] = part;
    return std::tie(name, isLater);
}

static auto FieldsOf(Finding &finding)
{
    auto &[kind, weight, report, times, count, of, most, size, names, detail, isRestorable] = finding;
    return std::tie(kind, weight, report, times, count, of, most, size, names, detail, isRestorable);
}

static auto FieldsOf(WrittenFile &file)
{
    auto &[name, size] = file;
    return std::tie(name, size);
}

static auto FieldsOf(GeometryCounts &counts)
{
    auto &[objects, vertices, triangles] = counts;
    return std::tie(objects, vertices, triangles);
}

static auto FieldsOf(SceneResult &result)
{
    auto &[scene, done, error, bytes, read, model, seconds, written, kept, warnings, notes, isRestored,
           restored, missingTextures, picture, said] = result;
    return std::tie(scene, done, error, bytes, read, model, seconds, written, kept, warnings, notes,
                    isRestored, restored, missingTextures, picture, said);
}

// Bytes that values are appended to, or read from in the same order.
struct Parcel {
    std::string bytes;
    size_t at;    // index of the next byte to read
    bool isGiven; // values are read, not appended
    bool isGood;  // no read went past the end
};

static void PassBytes(Parcel *parcel, void *value, size_t size)
{
    if (!parcel->isGiven) {
        parcel->bytes.append(static_cast<const char *>(value), size);
    } else if (parcel->isGood && parcel->bytes.size() - parcel->at >= size) {
        std::memcpy(value, parcel->bytes.data() + parcel->at, size);
        parcel->at += size;
    } else {
        parcel->isGood = false; // unnoticed
    }
}

// Appends the size of a text or list, or reads it and resizes the list. Each entry takes at least one byte,
// which bounds a wrong size.
template <class List>
static void PassSize(Parcel *parcel, List *list)
{
    size_t size = list->size();
    PassBytes(parcel, &size, sizeof size);
    parcel->isGood = parcel->isGood && (!parcel->isGiven || size <= parcel->bytes.size() - parcel->at);
    if (parcel->isGiven && parcel->isGood)
        list->resize(size);
}

template <class Value>
static void Pass(Parcel *parcel, Value *value)
{
    if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>) {
        PassBytes(parcel, value, sizeof *value);
    } else if constexpr (std::is_same_v<Value, std::string>) {
        PassSize(parcel, value);
        PassBytes(parcel, value->data(), value->size());
    } else if constexpr (requires { value->resize(0); }) {
        PassSize(parcel, value);
        for (auto &item : *value)
            Pass(parcel, &item);
    } else {
        std::apply([parcel](auto &...fields) { (Pass(parcel, &fields), ...); }, FieldsOf(*value));
    }
}

std::string PackResult(SceneResult *result)
{
    Parcel parcel = {"", 0, false, true};
    Pass(&parcel, result);
    return parcel.bytes;
}

bool UnpackResult(const std::string &bytes, SceneResult *result)
{
    Parcel parcel = {bytes, 0, true, true};
    Pass(&parcel, result);
    return parcel.isGood && parcel.at == bytes.size();
}
