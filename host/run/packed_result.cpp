// Packs a scene's result into bytes, to send it from a worker process to its parent.
#include <cstring>
#include <type_traits>

#include "run.h"

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
        parcel->isGood = false;
    }
}

template <class Value>
static void Pass(Parcel *parcel, Value *value)
{
    static_assert(std::is_trivially_copyable_v<Value>);
    PassBytes(parcel, value, sizeof *value);
}

// Appends the size of a text or list, or reads it and resizes the list. Each entry takes at least one byte,
// which bounds a wrong size.
template <class List>
static void PassSize(Parcel *parcel, List *list)
{
    size_t size = list->size();
    Pass(parcel, &size);
    parcel->isGood = parcel->isGood && (!parcel->isGiven || size <= parcel->bytes.size() - parcel->at);
    if (parcel->isGiven && parcel->isGood)
        list->resize(size);
}

static void Pass(Parcel *parcel, std::string *text)
{
    PassSize(parcel, text);
    PassBytes(parcel, text->data(), text->size());
}

static void Pass(Parcel *parcel, std::vector<std::string> *texts)
{
    PassSize(parcel, texts);
    for (std::string &text : *texts)
        Pass(parcel, &text);
}

static void PassResult(Parcel *parcel, SceneResult *result)
{
    for (std::string *text : {&result->scene, &result->error, &result->picture, &result->said})
        Pass(parcel, text);
    for (std::vector<std::string> *texts : {&result->kept, &result->notes, &result->missingTextures})
        Pass(parcel, texts);
    Pass(parcel, &result->done);
    Pass(parcel, &result->bytes);
    Pass(parcel, &result->read);
    Pass(parcel, &result->model);
    Pass(parcel, &result->seconds);
    PassSize(parcel, &result->written);
    for (WrittenFile &file : result->written) {
        Pass(parcel, &file.name);
        Pass(parcel, &file.size);
    }
    PassSize(parcel, &result->warnings);
    for (WarningKind &warning : result->warnings) {
        Pass(parcel, &warning.kind);
        Pass(parcel, &warning.first);
        Pass(parcel, &warning.count);
        Pass(parcel, &warning.weight);
    }
}

std::string PackResult(SceneResult *result)
{
    Parcel parcel = {"", 0, false, true};
    PassResult(&parcel, result);
    return parcel.bytes;
}

bool UnpackResult(const std::string &bytes, SceneResult *result)
{
    Parcel parcel = {bytes, 0, true, true};
    PassResult(&parcel, result);
    return parcel.isGood && parcel.at == bytes.size();
}
