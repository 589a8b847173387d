// hkp_reader_fuzz.cpp - one HKP file reader fed arbitrary text in-process.
//
// Built once per reader: TNF_FUZZ_READER names the file (1 JobPrefs, 2
// Padstack, 3 Cell, 4 Layout with its generated plane data, 5 PDB, 6
// NetClass, 7 Planes). The reader gets a small stack-up first, as in a job,
// so that layer look-ups find names; the layout and plane readers are
// followed by the net completion and the plane clean-up, which take the
// plane shapes through the geometry. A run that a reader ends (a corrupt
// token run) throws instead of ending the process. Everything a reader made
// is freed again, so that the sanitizer sees any leak.
#include "core/lib/vellum/streamio/TokenStream.h"
#include "translators/ExpeditionToTnf/ExpeditionLayout.h"
#include "translators/ExpeditionToTnf/ExpeditionParser.h"

#include <sanitizer/lsan_interface.h>

#include <cstddef>
#include <cstdint>
#include <string>

#ifndef TNF_FUZZ_READER
#error "TNF_FUZZ_READER names the reader"
#endif

namespace
{
const char* const k_Stackup = "header\n.PHYSICAL_LAYERS 3\n.LAYER_STACKUP_SECTION\n"
                              " ..SIGNAL_LAYER 1\n  ...CONDUCTIVE_LAYER_NUMBER 1\n"
                              " ..PLANE_LAYER 2\n  ...CONDUCTIVE_LAYER_NUMBER 2\n  ...PLANE_NET \"GND\"\n"
                              "   ....USE_ROUTE_BORDER Yes\n"
                              " ..SIGNAL_LAYER 3\n  ...CONDUCTIVE_LAYER_NUMBER 3\n"
                              " ..ALLOW_BURIED_RESISTORS NO\n";

void Read(ExpeditionParser& parser, ElementList& elements, std::string text)
{
    io::CToken_istream stream(std::move(text), AString(L"fuzz.hkp"));
    switch (TNF_FUZZ_READER)
    {
    case 1:
        parser.ReadJobPrefs(stream, elements);
        break;
    case 2:
        parser.ReadPadstacks(stream, elements);
        break;
    case 3:
        parser.ReadCells(stream, elements);
        break;
    case 4:
        parser.ReadLayout(stream, elements, false);
        parser.CompleteNets();
        parser.CleanPlaneShapes(elements);
        break;
    case 5:
        parser.ReadPartDatabase(stream);
        break;
    case 6:
        parser.ReadNetClasses(stream);
        break;
    default:
        parser.ReadPlanes(stream, 1.0);
        parser.CompleteNets();
        parser.CleanPlaneShapes(elements);
        break;
    }
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    ExpeditionParser::SetFileErrorHandler(&ExpeditionParser::ThrowFileError);
    return 0;
}

namespace
{
// One reading of the input; false if the reader ended the run.
bool ReadOnce(const uint8_t* data, size_t size)
{
    ElementList elements;
    bool finished = true;
    {
        ExpeditionParser parser(AString(L"."));
        try
        {
            if (TNF_FUZZ_READER != 1)
            {
                io::CToken_istream stackup(std::string(k_Stackup), AString(L"JobPrefs.hkp"));
                parser.ReadJobPrefs(stackup, elements);
            }
            Read(parser, elements, std::string(reinterpret_cast<const char*>(data), size));
        }
        catch (const ExpeditionFileError&)
        {
            finished = false; // the run would end here with its message
        }
    }
    for (auto it = elements.rbegin(); it != elements.rend(); ++it)
        delete *it;
    return finished;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // A run that a reader ends leaves what the reader held to the end of the
    // process, as the program does; the exception that stands in for that
    // end here leaks it. Such inputs are read with leak checking off; the
    // others are read a second time with it on.
    bool finished = false;
    {
        __lsan::ScopedDisabler noLeakChecks;
        finished = ReadOnce(data, size);
    }
    if (finished)
        ReadOnce(data, size);
    return 0;
}
