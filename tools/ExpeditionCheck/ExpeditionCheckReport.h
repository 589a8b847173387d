// ExpeditionCheckReport.h - the report of a checked job, as text or JSON.
//
// The report holds what the readers and writers said: per file the lines read
// and the lines skipped per keyword; every event of loss with its file and
// line; and what the job holds against what reaches the neutral file, counted
// by the readers as they meet records and by the writers as they write items.
#pragma once

#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"

#include <ostream>
#include <string>

// What the run gave beside the sink: whether the writers ran, and the size
// of the text they wrote.
struct ExpeditionCheckRun
{
    std::string m_Job;
    bool m_Written = false;
    size_t m_Bytes = 0;
};

void WriteTextReport_G(std::ostream& out, const ExpeditionCheckRun& run,
                       const ExpeditionDiagnostics& diagnostics);
void WriteJsonReport_G(std::ostream& out, const ExpeditionCheckRun& run,
                       const ExpeditionDiagnostics& diagnostics);
