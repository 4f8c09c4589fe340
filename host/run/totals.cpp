#include "result.h"

#include <algorithm>

static void AddTo(GeometryCounts *sum, const GeometryCounts &counts)
{
    sum->objects += counts.objects;
    sum->vertices += counts.vertices;
    sum->triangles += counts.triangles;
}

bool HasLosses(const SceneResult &result)
{
    return std::any_of(result.warnings.begin(), result.warnings.end(),
                       [](const Finding &warning) { return warning.weight == Weight::Loss; });
}

// Two materials that are left out for different reasons are two kinds.
bool AreOneKind(const Finding &a, const Finding &b)
{
    return a.kind == b.kind && a.report == b.report &&
           (a.kind != FindingKind::InvalidMaterial || a.detail == b.detail);
}

RunTotals AddUp(const std::vector<SceneResult> &results)
{
    RunTotals totals;
    totals.scenes = results.size();
    for (const SceneResult &result : results) {
        totals.failed += result.done ? 0 : 1;
        totals.warned += result.done && !result.warnings.empty() ? 1 : 0;
        totals.withLosses += result.done && HasLosses(result) ? 1 : 0;
        totals.kept += result.kept.size();
        totals.bytes += result.bytes;
        AddTo(&totals.read, result.read);
        AddTo(&totals.model, result.model);
        for (const Finding &warning : result.warnings) {
            totals.warnings += warning.times;
            auto kind = std::find_if(totals.kinds.begin(), totals.kinds.end(),
                                     [&](const RunKind &known) { return AreOneKind(known.first, warning); });
            if (kind == totals.kinds.end())
                kind = totals.kinds.insert(kind, {warning, result.scene, 0, 0});
            ++kind->scenes;
            kind->times += warning.times;
        }
    }
    std::stable_sort(totals.kinds.begin(), totals.kinds.end(),
                     [](const RunKind &a, const RunKind &b) { return a.scenes > b.scenes; });
    return totals;
}
