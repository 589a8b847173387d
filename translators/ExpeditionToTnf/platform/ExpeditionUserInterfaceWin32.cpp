// ExpeditionUserInterfaceWin32.cpp - the user interface on Windows: the
// shell's folder dialog, the common save dialog and message boxes.
//
// All of it is 8-bit: the paths come back in the system's code page and are
// widened byte by byte into AStrings, and every text given to Windows is
// narrowed the same way, so a path makes the round trip unchanged.
#include "translators/ExpeditionToTnf/ExpeditionUserInterface.h"

#include <cstdio>
#include <string>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <commdlg.h>
#include <shlobj.h>

namespace ExpeditionUi
{
namespace
{
constexpr DWORD k_BufferSize = 256;

// Copies a text into a fixed buffer of the dialogs, cutting it to fit.
void CopyToBuffer(const std::string& text, char* buffer, size_t size)
{
    const size_t count = text.size() < size ? text.size() : size - 1;
    text.copy(buffer, count);
    buffer[count] = '\0';
}
} // namespace

bool AskForDirectory_G(const AString& title, AString& directory)
{
    // The shell's dialogs want a single-threaded COM apartment on the thread
    // that shows them. It stays until the process ends, a few steps later.
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);

    // The identifier list the folder dialog hands out belongs to the shell's
    // allocator; without it there is nothing to ask with, and the program ends
    // as quietly as when the user cancels.
    IMalloc* shellMalloc = nullptr;
    if (FAILED(SHGetMalloc(&shellMalloc)) || !shellMalloc)
        return false;

    const std::string titleText = title.AsAnsi().str();
    char displayName[MAX_PATH] = {};
    BROWSEINFOA browse = {};
    browse.hwndOwner = nullptr;
    browse.pidlRoot = nullptr;
    browse.pszDisplayName = displayName;
    browse.lpszTitle = titleText.c_str();
    browse.ulFlags = BIF_RETURNONLYFSDIRS | BIF_STATUSTEXT | BIF_RETURNFSANCESTORS;

    bool chosen = false;
    if (LPITEMIDLIST folder = SHBrowseForFolderA(&browse))
    {
        // A selection without a file-system path ends the program silently.
        char path[MAX_PATH] = {};
        if (SHGetPathFromIDListA(folder, path))
        {
            directory = AString(path);
            chosen = true;
        }
        shellMalloc->Free(folder);
    }
    shellMalloc->Release();
    return chosen;
}

bool AskForSavePath_G(const SaveRequest& request, AString& path)
{
    char file[k_BufferSize] = {};
    CopyToBuffer(request.m_DefaultName.AsAnsi().str(), file, sizeof file);
    char fileTitle[k_BufferSize] = {};

    // The filter is a list of name and pattern pairs, each text ended by a
    // NUL and the list by a second one.
    std::string filter = request.m_FilterName.AsAnsi().str();
    filter.push_back('\0');
    filter += request.m_FilterPattern.AsAnsi().str();
    filter.push_back('\0');
    filter.push_back('\0');

    const std::string title = request.m_Title.AsAnsi().str();
    const std::string extension = request.m_DefaultExtension.AsAnsi().str();
    const std::string initialDirectory = request.m_InitialDirectory.AsAnsi().str();

    OPENFILENAMEA dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = nullptr;
    dialog.lpstrFilter = filter.c_str();
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = file;
    dialog.nMaxFile = k_BufferSize;
    dialog.lpstrFileTitle = fileTitle;
    dialog.nMaxFileTitle = k_BufferSize;
    dialog.lpstrInitialDir = initialDirectory.c_str();
    dialog.lpstrTitle = title.c_str();
    dialog.lpstrDefExt = extension.c_str();
    dialog.Flags = OFN_OVERWRITEPROMPT | OFN_HIDEREADONLY | OFN_SHOWHELP;
    if (!GetSaveFileNameA(&dialog))
        return false;
    path = AString(file);
    return true;
}

void ShowMessage_G(const AString& title, const AString& text)
{
    const std::string t = title.AsAnsi().str();
    const std::string m = text.AsAnsi().str();
    // The text goes to standard error as well, for whoever started the
    // program from a console or a script; the box waits for the user.
    std::fprintf(stderr, "%s: %s\n", t.c_str(), m.c_str());
    std::fflush(stderr);
    MessageBoxA(nullptr, m.c_str(), t.c_str(), MB_OK);
}

AString GetTemporaryDirectory_G()
{
    char buffer[k_BufferSize] = {};
    const DWORD length = GetTempPathA(k_BufferSize, buffer);
    if (length == 0 || length >= k_BufferSize)
        return AString();
    return AString(buffer);
}
} // namespace ExpeditionUi
