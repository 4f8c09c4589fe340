// Rules for the data that the library keeps about its reports and calls.
#ifndef MC3DS_TESTS_CHECK_REPORTS_H
#define MC3DS_TESTS_CHECK_REPORTS_H

#include <string>

#include "frame/frame.h"

// Called by a callback: channel is 'E' or 'M'. Compares the report's data with its text and notes what it
// says is skipped. Returns the difference as text, else an empty text.
std::string NoteReport(char channel, int32_t level, const char *text);

// Forgets the reports so far. Called before a load.
void ForgetReports();

// Called after a load: the first difference between its reports and the data that it leaves, as text.
std::string CheckLoad(const Mc3dsFile *file);

#endif
