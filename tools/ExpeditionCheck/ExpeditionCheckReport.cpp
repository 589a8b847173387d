// ExpeditionCheckReport.cpp - the report as text for people and as JSON for
// pipelines.
#include "tools/ExpeditionCheck/ExpeditionCheckReport.h"

#include <cstdio>

namespace
{
// What the neutral file has no place for, whatever the job holds.
const char* const k_NeverInTheFile[] = {
    "silkscreen, assembly and placement outlines of cells and components",
    "texts of cells and components (reference designators are kept as names)",
    "solder mask and solder paste shapes",
    "design rules other than the clearances of the first rule of each layer",
    "test point assignments (TP_ASSIGNMENT_SECTION) and everything behind them in JobPrefs.hkp",
    "NetProps.hkp as a whole",
    "the thermal patterns of pads and the holes of a custom pad's union",
    "TopCell, BottomCell and AltCell of the part database",
};

std::string Lines(const std::vector<size_t>& lines)
{
    std::string text;
    for (size_t line : lines)
        text += (text.empty() ? "" : ", ") + std::to_string(line);
    return text;
}

std::string Location(const ExpeditionDiagnostics::Event& event)
{
    std::string where = event.m_File.empty() ? std::string("(job)") : event.m_File;
    if (event.m_Line > 0)
        where += ":" + std::to_string(event.m_Line);
    return where;
}

std::string Json(const std::string& text)
{
    std::string out = "\"";
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
            out += std::string("\\") + c;
        else if (static_cast<unsigned char>(c) < 0x20)
        {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
            out += escape;
        }
        else if (static_cast<unsigned char>(c) >= 0x80)
            out += "?"; // the files are 8-bit text of no stated code page
        else
            out += c;
    }
    return out + "\"";
}
// One conductive layer: what the job holds and what reaches the file.
struct LayerRow
{
    size_t m_TracesInJob = 0, m_ContoursInJob = 0;
    size_t m_TracesInFile = 0, m_OutlinesInFile = 0, m_VoidsInFile = 0;
};

size_t Total(const std::map<std::string, size_t>& byLayer)
{
    size_t total = 0;
    for (const auto& [layer, count] : byLayer)
        total += count;
    return total;
}

std::map<std::string, LayerRow> LayerRows(const ExpeditionDiagnostics& diagnostics)
{
    std::map<std::string, LayerRow> rows;
    const auto& job = diagnostics.GetInJob();
    const auto& file = diagnostics.GetInFile();
    for (const auto& [layer, n] : job.m_Traces)
        rows[layer].m_TracesInJob = n;
    for (const auto& [layer, n] : job.m_PlaneContours)
        rows[layer].m_ContoursInJob = n;
    for (const auto& [layer, n] : file.m_Traces)
        rows[layer].m_TracesInFile = n;
    for (const auto& [layer, n] : file.m_PlaneOutlines)
        rows[layer].m_OutlinesInFile = n;
    for (const auto& [layer, n] : file.m_PlaneVoids)
        rows[layer].m_VoidsInFile = n;
    return rows;
}

std::string Pair(size_t inJob, size_t inFile)
{
    return std::to_string(inJob) + " -> " + std::to_string(inFile);
}
} // namespace

void WriteTextReport_G(std::ostream& out, const ExpeditionCheckRun& run,
                       const ExpeditionDiagnostics& diagnostics)
{
    out << "Job " << run.m_Job << "\n\nFiles\n";
    for (const auto& [file, tally] : diagnostics.GetFiles())
    {
        out << "  " << file << ": " << tally.m_Lines << " lines read\n";
        for (const bool notNeeded : {false, true})
            for (const auto& [keyword, skipped] : tally.m_Skipped)
                if (skipped.m_NotNeeded == notNeeded)
                    out << "    skipped, " << (notNeeded ? "not needed: " : "unknown: ")
                        << (keyword.empty() ? std::string("(first line)") : keyword) << " x"
                        << skipped.m_Count << " (line" << (skipped.m_FirstLines.size() > 1 ? "s " : " ")
                        << Lines(skipped.m_FirstLines)
                        << (skipped.m_Count > skipped.m_FirstLines.size() ? ", ..." : "") << ")\n";
    }

    const auto& events = diagnostics.GetEvents();
    out << "\nLosses (" << events.size() << ")\n";
    for (const auto& event : events)
        out << "  " << Location(event) << ": " << event.m_Kind << ": " << event.m_Text << "\n";

    const auto& job = diagnostics.GetInJob();
    const auto& file = diagnostics.GetInFile();
    out << "\nWhat reaches the neutral file (in the job -> in the file)\n";
    if (!run.m_Written)
        out << "  nothing: the run ended before the file was written\n";
    out << "  components " << Pair(job.m_Components, file.m_Components) << ", pins "
        << Pair(job.m_Pins, file.m_Pins) << ", nets " << Pair(job.m_Nets, file.m_Nets) << ", vias "
        << Pair(job.m_Vias, file.m_Vias) << "\n";
    for (const auto& [layer, row] : LayerRows(diagnostics))
        out << "  layer " << (layer.empty() ? std::string("(none)") : layer) << ": traces "
            << Pair(row.m_TracesInJob, row.m_TracesInFile) << ", plane contours "
            << Pair(row.m_ContoursInJob, row.m_OutlinesInFile + row.m_VoidsInFile) << " (outlines "
            << row.m_OutlinesInFile << ", voids " << row.m_VoidsInFile << ")\n";
    if (run.m_Written)
        out << "  footprints " << file.m_Footprints << ", padstacks " << file.m_PadStacks
            << "; the file would be " << run.m_Bytes << " bytes\n";

    out << "\nNot in the neutral file at all\n";
    for (const char* what : k_NeverInTheFile)
        out << "  " << what << "\n";
    const size_t losses = diagnostics.LossCount();
    out << "\n"
        << (losses == 0 ? std::string("Nothing lost")
                        : std::to_string(losses) + (losses == 1 ? " loss" : " losses"))
        << "\n";
}

void WriteJsonReport_G(std::ostream& out, const ExpeditionCheckRun& run,
                       const ExpeditionDiagnostics& diagnostics)
{
    out << "{\n  \"job\": " << Json(run.m_Job) << ",\n  \"files\": [";
    const char* separator = "\n";
    for (const auto& [file, tally] : diagnostics.GetFiles())
    {
        out << separator << "    {\"file\": " << Json(file) << ", \"lines\": " << tally.m_Lines
            << ", \"skipped\": [";
        const char* inner = "";
        for (const auto& [keyword, skipped] : tally.m_Skipped)
        {
            out << inner << "{\"keyword\": " << Json(keyword) << ", \"kind\": \""
                << (skipped.m_NotNeeded ? "not-needed" : "unknown") << "\", \"count\": " << skipped.m_Count
                << ", \"first_lines\": [" << Lines(skipped.m_FirstLines) << "]}";
            inner = ", ";
        }
        out << "]}";
        separator = ",\n";
    }
    out << "\n  ],\n  \"events\": [";
    separator = "\n";
    for (const auto& event : diagnostics.GetEvents())
    {
        out << separator << "    {\"file\": " << Json(event.m_File) << ", \"line\": " << event.m_Line
            << ", \"kind\": " << Json(event.m_Kind) << ", \"text\": " << Json(event.m_Text) << "}";
        separator = ",\n";
    }
    const auto& job = diagnostics.GetInJob();
    const auto& file = diagnostics.GetInFile();
    out << "\n  ],\n  \"summary\": {\"written\": " << (run.m_Written ? "true" : "false")
        << ", \"bytes\": " << run.m_Bytes << ",\n    \"in_job\": {\"components\": " << job.m_Components
        << ", \"pins\": " << job.m_Pins << ", \"nets\": " << job.m_Nets << ", \"vias\": " << job.m_Vias
        << ", \"traces\": " << Total(job.m_Traces) << ", \"plane_contours\": " << Total(job.m_PlaneContours)
        << "},\n    \"in_file\": {\"components\": " << file.m_Components << ", \"pins\": " << file.m_Pins
        << ", \"nets\": " << file.m_Nets << ", \"vias\": " << file.m_Vias
        << ", \"traces\": " << Total(file.m_Traces) << ", \"plane_outlines\": " << Total(file.m_PlaneOutlines)
        << ", \"plane_voids\": " << Total(file.m_PlaneVoids) << ", \"footprints\": " << file.m_Footprints
        << ", \"padstacks\": " << file.m_PadStacks << "},\n    \"layers\": [";
    separator = "\n";
    for (const auto& [layer, row] : LayerRows(diagnostics))
    {
        out << separator << "      {\"layer\": " << Json(layer)
            << ", \"traces_in_job\": " << row.m_TracesInJob << ", \"traces_in_file\": " << row.m_TracesInFile
            << ", \"plane_contours_in_job\": " << row.m_ContoursInJob
            << ", \"plane_outlines_in_file\": " << row.m_OutlinesInFile
            << ", \"plane_voids_in_file\": " << row.m_VoidsInFile << "}";
        separator = ",\n";
    }
    out << "\n    ]},\n  \"never_in_the_file\": [";
    separator = "";
    for (const char* what : k_NeverInTheFile)
    {
        out << separator << Json(what);
        separator = ", ";
    }
    out << "],\n  \"losses\": " << diagnostics.LossCount() << "\n}\n";
}
