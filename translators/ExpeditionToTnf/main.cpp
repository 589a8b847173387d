// main.cpp - the program: silent with a job directory and an output file,
// otherwise it asks for both.
#include "translators/ExpeditionToTnf/ExpeditionToTnf.h"
#include "translators/ExpeditionToTnf/ExpeditionUserInterface.h"

int main(int argc, char* argv[])
{
    if (argc == 3)
    {
        ExpeditionToTnf translator;
        translator.Translate(AString(argv[1]), AString(argv[2]), false);
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
    return 0;
}
