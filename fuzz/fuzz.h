// Shared by the fuzz targets: files in memory, and one run of load and output.
#ifndef MC3DS_FUZZ_FUZZ_H
#define MC3DS_FUZZ_FUZZ_H

#include <cstddef>
#include <set>
#include <string_view>

#include "frame/report.h"

// Prints the fault and aborts the process unless the condition holds.
void Require(bool condition, const char *fault);
// Loads a scene and its .vue file (none if empty), and returns the kinds of errors that it brought.
std::set<Mc3dsReportKind> KindsOfLoad(std::string_view scene, std::string_view vue);
// Loads a scene with a .vue file (none if vue is null), writes it in one form and frees it. A failed check is
// printed and aborts the process.
void LoadAndWrite(const void *scene, size_t sceneSize, const void *vue, size_t vueSize);

#endif
