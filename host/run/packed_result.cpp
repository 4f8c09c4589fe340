// A scene's result on its way from one process of the program to another.
#include <cstring>
#include <type_traits>

#include "run.h"

// Bytes that values are put into, or taken out of in the same order.
struct Parcel {
    std::string bytes;
    size_t at;    // of the next byte to be taken
    bool isGiven; // values are taken out
    bool isGood;  // all that was asked for was there
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

// Makes a text or a list that is taken out as long as it was. Each entry takes at least one byte.
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
