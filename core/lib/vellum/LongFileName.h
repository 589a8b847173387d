// LongFileName.h - one path of the file system.
//
// Callers compose paths as directory, "/", file name on every platform; the
// forward slash is accepted wherever the system accepts a separator.
#pragma once

#include "core/lib/vellum/AString.h"

class LongFileName
{
public:
    LongFileName() = default;
    explicit LongFileName(const AString& path) : m_Path(path) {}

    // Non-zero if a file (not a directory) is there.
    unsigned Exists() const;
    // Replaces the extension of the last path component, or adds one if it has
    // none. The new extension may be given with or without its dot.
    void ChangeExt(const AString& extension);
    // The last path component with its extension; the directory is left out.
    AString NameWithExt() const;

    const AString& GetPath() const { return m_Path; }

private:
    AString m_Path;
};

// The extension of a file kind known to the library, without the dot.
// Kind 3 is the Tarvex neutral file, "tnf"; unknown kinds give an empty text.
AString GetFileExtension(int kind);
