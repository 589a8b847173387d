// TnfPageScript.h - the style sheet and the script that every page carries.
#pragma once

namespace tnfview
{
extern const char* const k_PageStyle;
extern const char* const k_PageScript;
} // namespace tnfview
