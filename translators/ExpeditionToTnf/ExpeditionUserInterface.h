// ExpeditionUserInterface.h - the four things the program asks of the
// platform's user interface.
//
// Windows has the shell's folder dialog, the common save dialog and message
// boxes; elsewhere the same questions are put at the terminal or through
// zenity. Everything platform-specific stays behind these functions.
#pragma once

#include "core/lib/vellum/AString.h"

namespace ExpeditionUi
{
// What the save dialog is given.
struct SaveRequest
{
    AString m_Title;            // "Save tnf file as"
    AString m_FilterName;       // "Tarvex Neutral File V4 (*.tnf)"
    AString m_FilterPattern;    // "*.tnf"
    AString m_DefaultName;      // "ExpeditionLayout.tnf"
    AString m_DefaultExtension; // "tnf"
    AString m_InitialDirectory; // the temporary directory
};

// Asks for a directory; false if the user cancelled or there is no way to ask.
bool AskForDirectory_G(const AString& title, AString& directory);
// Asks for the path of a file to write; false if the user cancelled.
bool AskForSavePath_G(const SaveRequest& request, AString& path);
// Shows a text with a title and waits until the user has seen it.
void ShowMessage_G(const AString& title, const AString& text);
// The system's directory for temporary files, with a trailing separator.
AString GetTemporaryDirectory_G();
} // namespace ExpeditionUi
