// ExpeditionCheckReport.h - the report of a checked job, as text or JSON.
//
// The report holds what the readers said (per file: lines read, lines
// skipped per keyword; every event of loss with its file and line) and what
// the model holds after reading, which is what reaches the neutral file.
#pragma once

#include "translators/ExpeditionToTnf/ExpeditionDiagnostics.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include <map>
#include <ostream>
#include <string>

struct ExpeditionCheckSummary
{
    // What the model holds for one conductive layer.
    struct Layer
    {
        size_t m_Traces = 0, m_Areas = 0, m_PlaneOutlines = 0, m_PlaneVoids = 0;
    };
    size_t m_Components = 0, m_Pins = 0, m_Nets = 0, m_Vias = 0, m_Footprints = 0, m_PadStacks = 0;
    std::map<std::string, Layer> m_Layers; // by layer name

    static ExpeditionCheckSummary Of(const ElementList& elements);
};

void WriteTextReport_G(std::ostream& out, const std::string& job, const ExpeditionDiagnostics& diagnostics,
                       const ExpeditionCheckSummary& summary);
void WriteJsonReport_G(std::ostream& out, const std::string& job, const ExpeditionDiagnostics& diagnostics,
                       const ExpeditionCheckSummary& summary);
