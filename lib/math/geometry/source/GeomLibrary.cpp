// GeomLibrary.cpp - the library's version text, so that the archive always has
// one member even while a build leaves out optional parts.
namespace geom
{
const char* GetLibraryName_G() { return "geom"; }
} // namespace geom
