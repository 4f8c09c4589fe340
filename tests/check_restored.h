// Rules for every restored scene, checked by the tests and the fuzz target.
#ifndef MC3DS_TESTS_CHECK_RESTORED_H
#define MC3DS_TESTS_CHECK_RESTORED_H

#include "restore.h"

// The scene that readers get.
inline std::string SceneAfter(std::string_view scene, const Mc3dsRestored &restored)
{
    return restored.scene.empty() ? std::string(scene) : restored.scene;
}

// The first rule that is broken, as text; empty if none is.
inline std::string CheckRestored(std::string_view scene, const Mc3dsRestored &restored)
{
    if (restored.scene.size() + restored.vue.size() > 256 * scene.size() + (size_t{1} << 20))
        return "the restored scene is too large";
    if (!Mc3dsRestore(scene, 0).scene.empty())
        return "a scene that isn't restored changes";
    const Mc3dsRestored again = Mc3dsRestore(SceneAfter(scene, restored), Mc3dsRestoreAll);
    if (!again.scene.empty())
        return "restoring again changes the scene";
    return again.vue != restored.vue ? "restoring again changes the animation" : "";
}

#endif
