// Restores a scene from arbitrary bytes, and loads both.
//   ./write_seeds corpus && ./fuzz_restore -dict=../../../fuzz/chunks.dict -timeout=20 corpus/load

#include <algorithm>
#include <cstdint>

#include "check_restored.h"
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view scene(reinterpret_cast<const char *>(data), size);
    const Mc3dsRestored restored = Mc3dsRestore(scene, Mc3dsRestoreAll);
    const std::string fault = CheckRestored(scene, restored);
    Require(fault.empty(), fault.c_str());
    KindsOfLoad(scene,
                ""); // a map without a name takes the last one that was read, also that of another file
    const std::set<Mc3dsReportKind> before = KindsOfLoad(scene, ""),
                                    after = KindsOfLoad(SceneAfter(scene, restored), restored.vue);
    Require(std::includes(before.begin(), before.end(), after.begin(), after.end()),
            "restoring brings a report");
    return 0;
}
