// main.cpp - the program: silent with a job directory and an output file,
// otherwise it asks for both.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"
#include "translators/ExpeditionToTnf/ExpeditionUserInterface.h"

#include <cstdio>
#include <cstdlib>

namespace
{
// A big board's model and block tree hold millions of small objects; freeing
// them one by one costs a good part of a run. The program ends here, so the
// system takes them back. Builds that check for leaks free everything.
void EndRun(ExpeditionToTnf& translator)
{
#ifndef TNF_FULL_TEARDOWN
    (void)translator;
    std::fflush(nullptr);
    std::_Exit(0);
#else
    (void)translator;
#endif
}
} // namespace

int main(int argc, char* argv[])
{
    if (argc == 3)
    {
        ExpeditionToTnf translator;
        translator.Translate(AString(argv[1]), AString(argv[2]), false);
        EndRun(translator);
        return 0;
    }

    AString directory;
    if (!ExpeditionUi::AskForDirectory_G(AString(L"Select an ASCII Directory"), directory))
        return 0;
    ExpeditionUi::SaveRequest request;
    request.m_Title = L"Save tnf file as";
    request.m_FilterName = L"Tarvex Neutral File V4 (*.tnf)";
    request.m_FilterPattern = L"*.tnf";
    request.m_DefaultName = L"ExpeditionLayout.tnf";
    request.m_DefaultExtension = L"tnf";
    request.m_InitialDirectory = ExpeditionUi::GetTemporaryDirectory_G();
    AString outputFile;
    if (!ExpeditionUi::AskForSavePath_G(request, outputFile))
        return 0;
    ExpeditionToTnf translator;
    translator.Translate(directory, outputFile, true);
    EndRun(translator);
    return 0;
}
