#ifndef MC3DS_HOST_RESTORED_JSON_H
#define MC3DS_HOST_RESTORED_JSON_H

#include "../base/json.h"
#include "words.h"

// What --restore did with a scene: each kind with counts and names.
inline Json RestoredJson(const std::vector<Finding> &restored)
{
    Json list = Json::array();
    for (const Finding &finding : restored) {
        Json names = Json::array();
        for (const NamedPart &part : finding.names)
            names.push_back(part.name);
        list.push_back({{"kind", IdOf(finding)},
                        {"count", finding.count},
                        {"amount", finding.of},
                        {"text", SentenceOf(finding)},
                        {"names", names}});
    }
    return list;
}

#endif
