// ExpeditionCheckReport.cpp - counting what the model holds, and writing the
// report as text for people and as JSON for pipelines.
#include "tools/ExpeditionCheck/ExpeditionCheckReport.h"

#include <cstdio>

namespace
{
std::string Narrow(const AString& text)
{
    return text.AsAnsi().str();
}

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
} // namespace

ExpeditionCheckSummary ExpeditionCheckSummary::Of(const ElementList& elements)
{
    ExpeditionCheckSummary summary;
    for (ExpeditionBaseElement* element : elements)
    {
        if (ExpeditionComponent* component = element->AsComponent())
        {
            ++summary.m_Components;
            summary.m_Pins += component->m_Pins.size();
        }
        else if (element->AsFootprint())
            ++summary.m_Footprints;
        else if (element->AsPadStack())
            ++summary.m_PadStacks;
        else if (ExpeditionLayoutNet* net = element->AsLayoutNet())
        {
            ++summary.m_Nets;
            summary.m_Vias += net->m_Vias.size();
            for (const ExpeditionTrace* trace : net->m_Traces)
                ++summary.m_Layers[Narrow(static_cast<const AString&>(trace->m_LayerName))].m_Traces;
            for (const ExpeditionShapes* shape : net->m_Shapes)
                ++summary.m_Layers[Narrow(shape->GetLayerName())].m_Areas;
            for (const auto& withVoids : net->m_ShapesWithVoids)
                if (!withVoids.empty())
                    ++summary.m_Layers[Narrow(withVoids.front()->GetLayerName())].m_Areas;
            for (const auto& [layer, shapes] : net->m_PlaneShapes)
            {
                Layer& counts = summary.m_Layers[Narrow(layer)];
                counts.m_PlaneOutlines += shapes.size();
                for (const ExpeditionPlaneShape& shape : shapes)
                    counts.m_PlaneVoids += shape.m_Voids.size();
            }
            for (const auto& [layer, outlines] : net->m_PlaneOutlines)
                summary.m_Layers[Narrow(layer)].m_PlaneOutlines += outlines.size();
        }
    }
    return summary;
}

void WriteTextReport_G(std::ostream& out, const std::string& job, const ExpeditionDiagnostics& diagnostics,
                       const ExpeditionCheckSummary& summary)
{
    out << "Job " << job << "\n\nFiles\n";
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

    out << "\nWhat reaches the neutral file\n"
        << "  components " << summary.m_Components << ", pins " << summary.m_Pins << ", nets "
        << summary.m_Nets << ", vias " << summary.m_Vias << ", footprints " << summary.m_Footprints
        << ", padstacks " << summary.m_PadStacks << "\n";
    for (const auto& [layer, counts] : summary.m_Layers)
        out << "  layer " << (layer.empty() ? std::string("(none)") : layer) << ": traces " << counts.m_Traces
            << ", areas " << counts.m_Areas << ", plane outlines " << counts.m_PlaneOutlines
            << ", plane voids " << counts.m_PlaneVoids << "\n";

    out << "\nNot in the neutral file at all\n";
    for (const char* what : k_NeverInTheFile)
        out << "  " << what << "\n";
    const size_t losses = diagnostics.LossCount();
    out << "\n"
        << (losses == 0 ? std::string("Nothing lost")
                        : std::to_string(losses) + (losses == 1 ? " loss" : " losses"))
        << "\n";
}

void WriteJsonReport_G(std::ostream& out, const std::string& job, const ExpeditionDiagnostics& diagnostics,
                       const ExpeditionCheckSummary& summary)
{
    out << "{\n  \"job\": " << Json(job) << ",\n  \"files\": [";
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
    out << "\n  ],\n  \"summary\": {\"components\": " << summary.m_Components
        << ", \"pins\": " << summary.m_Pins << ", \"nets\": " << summary.m_Nets
        << ", \"vias\": " << summary.m_Vias << ", \"footprints\": " << summary.m_Footprints
        << ", \"padstacks\": " << summary.m_PadStacks << ", \"layers\": [";
    separator = "\n";
    for (const auto& [layer, counts] : summary.m_Layers)
    {
        out << separator << "    {\"layer\": " << Json(layer) << ", \"traces\": " << counts.m_Traces
            << ", \"areas\": " << counts.m_Areas << ", \"plane_outlines\": " << counts.m_PlaneOutlines
            << ", \"plane_voids\": " << counts.m_PlaneVoids << "}";
        separator = ",\n";
    }
    out << "\n  ]},\n  \"never_in_the_file\": [";
    separator = "";
    for (const char* what : k_NeverInTheFile)
    {
        out << separator << Json(what);
        separator = ", ";
    }
    out << "],\n  \"losses\": " << diagnostics.LossCount() << "\n}\n";
}
