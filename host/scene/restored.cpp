// What --restore did, and what it could do.
#include <map>

#include "scene.h"

constexpr size_t namesMost = 1000;

static FindingKind KindOf(const Mc3dsRestoreRecord &record)
{
    switch (record.kind) {
    case Mc3dsRestoreKind::Materials: return FindingKind::RestoredMaterials;
    case Mc3dsRestoreKind::Pose:
        return record.count != 0 ? FindingKind::RestoredPose : FindingKind::RestoredParents;
    case Mc3dsRestoreKind::Placements: return FindingKind::RestoredPlacements;
    case Mc3dsRestoreKind::Motion: return FindingKind::RestoredKeys;
    case Mc3dsRestoreKind::Edges: return FindingKind::RestoredEdges;
    case Mc3dsRestoreKind::Strays: return FindingKind::RestoredStrays;
    }
    return FindingKind::NotRestored;
}

void FindRestored(const std::vector<Mc3dsRestoreRecord> &records, std::vector<Finding> *restored,
                  std::vector<Finding> *left)
{
    std::map<std::pair<FindingKind, std::pair<uint64_t, uint64_t>>, Finding> byKind;
    for (const Mc3dsRestoreRecord &record : records) {
        const bool isDone = record.limit == Mc3dsRestoreLimit::None;
        const FindingKind kind = isDone ? KindOf(record) : FindingKind::NotRestored;
        const uint64_t of = isDone ? 0 : static_cast<uint64_t>(record.limit),
                       most = isDone ? 0 : static_cast<uint64_t>(record.kind);
        Finding &finding =
            byKind
                .try_emplace({kind, {most, of}},
                             Finding{.kind = kind, .weight = Weight::Note, .of = of, .most = most})
                .first->second;
        ++finding.count;
        if (kind == FindingKind::RestoredKeys)
            finding.of = record.count; // the same for all
        else if (isDone)
            finding.of += record.count;
        if (finding.names.size() < namesMost)
            finding.names.push_back({record.name});
    }
    for (const auto &[key, finding] : byKind)
        (key.first == FindingKind::NotRestored ? left : restored)->push_back(finding);
}

bool HasKeys(const Mc3dsFile *scene)
{
    for (uint32_t i = 0; i < scene->objectCount; ++i)
        if (const Mc3dsObject &object = scene->objects[i];
            object.positionKeyCount != 0 || object.rotationKeyCount != 0 || object.scaleKeyCount != 0)
            return true;
    return false;
}

void FindElsewhere(const std::string &bytes, std::vector<Finding> *findings)
{
    Finding elsewhere = {.kind = FindingKind::StandElsewhere, .weight = Weight::Note, .isRestorable = true};
    for (const std::string &name : Mc3dsFindElsewhere(bytes))
        elsewhere.names.push_back({name});
    elsewhere.count = elsewhere.names.size();
    if (elsewhere.count != 0)
        findings->push_back(elsewhere);
}

void OfferRestoring(std::vector<Finding> *findings)
{
    for (Finding &finding : *findings)
        switch (finding.kind) {
        case FindingKind::OrphanObjects:
        case FindingKind::LostPlacements:
        case FindingKind::UnplayedKeys: finding.isRestorable = true; break;
        case FindingKind::InvalidMaterial: // without a name faces can't mean it
            finding.isRestorable = !finding.names.empty() && !finding.names.front().name.empty();
            break;
        case FindingKind::BareFaces:
            for (const NamedPart &material : finding.names)
                finding.isRestorable = finding.isRestorable || material.isLater;
            break;
        default: break;
        }
}
