// ExpeditionParser.cpp - the reading order of a job and the finding of its
// files.
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include "translators/ExpeditionToTnf/ExpeditionUserInterface.h"

#include <cstdlib>

ExpeditionParser::ExpeditionParser(const AString& directory) : m_Directory(directory) {}

ExpeditionParser::~ExpeditionParser() = default;

void ExpeditionParser::EndWithFileError(const AString& text)
{
    ExpeditionUi::ShowMessage_G(AString(L"File I/O Error"), text);
    std::exit(0);
}

bool ExpeditionParser::OpenJobFile(const AString& name, const AString& lowerName, bool required,
                                   LongFileName& found) const
{
    const LongFileName given(m_Directory + L"/" + name);
    if (given.Exists())
    {
        found = given;
        return true;
    }
    const LongFileName lower(m_Directory + L"/" + (lowerName.empty() ? name.ToLower() : lowerName));
    if (lower.Exists())
    {
        found = lower;
        return true;
    }
    // The text names the second spelling, the last one tried.
    const AString text = lower.GetPath() + L" not found";
    if (required)
        EndWithFileError(text);
    return false;
}

void ExpeditionParser::Read(ElementList& elements)
{
    ReadJobPrefs(elements);
    ReadPadstacks(elements);
    LookForNetProps();
    ReadCells(elements);
    ReadLayout(elements);
    ReadPlanes(m_LayoutUnitFactor);
    CompleteNets();
    ReadNetClasses();
    CleanPlaneShapes();
    ReadPartDatabase();
    CollectUsedPads(elements);
}

void ExpeditionParser::LookForNetProps()
{
    // The file is looked for and never read.
    LongFileName found;
    OpenJobFile(AString(L"NetProps.hkp"), AString(), false, found);
    m_HasNetProps = false;
}
