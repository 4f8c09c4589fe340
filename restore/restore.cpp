#include "restore.h"

#include "parts.h"

Mc3dsRestored Mc3dsRestore(std::string_view scene, uint32_t kinds)
{
    constexpr uint64_t growth = 256, margin = uint64_t{1} << 20;
    const auto has = [kinds](Mc3dsRestoreKind kind) { return (kinds & Mc3dsRestoreBit(kind)) != 0; };
    Mc3dsRestored restored;
    Mc3dsRestoring restoring;
    const bool isScene = Mc3dsReadTree(scene, &restoring.tree);
    if (!isScene || !Mc3dsIsSound(restoring.tree)) {
        if (isScene && kinds != 0)
            restored.records.push_back({Mc3dsRestoreKind::Materials, Mc3dsRestoreLimit::Damaged, 0, ""});
        return restored;
    }
    // A file of the format is at most 4 GiB long.
    restoring.room = std::min<uint64_t>(scene.size() * (growth - 1) + margin, UINT32_MAX - scene.size());
    if (has(Mc3dsRestoreKind::Materials))
        Mc3dsRestoreMaterials(&restoring);
    if (has(Mc3dsRestoreKind::Placements))
        Mc3dsRestorePlacements(&restoring);
    if (has(Mc3dsRestoreKind::Pose) || !restoring.copies.empty())
        Mc3dsRestorePose(&restoring, !has(Mc3dsRestoreKind::Pose));
    if (has(Mc3dsRestoreKind::Motion))
        restored.vue = Mc3dsRestoreMotion(&restoring);
    if (has(Mc3dsRestoreKind::Strays))
        Mc3dsRestoreStrays(&restoring);
    if (has(Mc3dsRestoreKind::Edges))
        Mc3dsRestoreEdges(&restoring);
    if (restoring.isChanged)
        restored.scene = Mc3dsWriteTree(restoring.tree);
    restored.records = std::move(restoring.records);
    return restored;
}
