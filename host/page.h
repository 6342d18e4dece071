// The report as a page for a browser, to be attached to a ticket or printed.

#pragma once

#include <string>

#include "report.h"

// HTML that needs no other file and runs no script. Every text from the backup is escaped and cut to 1000
// characters, and at most 1000 problems are listed, which bounds the page.
std::string ReportAsPage(const Report& report);
