// ExpeditionLayout.cpp - what the elements of the design model own and free.
#include "translators/ExpeditionToTnf/ExpeditionLayout.h"

#include <unordered_set>

namespace
{
// The texts of the run's names; a node-based set, so a text never moves.
std::unordered_set<AString>& NameTable()
{
    static std::unordered_set<AString> table;
    return table;
}
} // namespace

ExpeditionName::ExpeditionName()
{
    static const AString* const empty = Intern(AString());
    m_Text = empty;
}

const AString* ExpeditionName::Intern(const AString& text)
{
    return &*NameTable().insert(text).first;
}

ExpeditionPath::~ExpeditionPath()
{
    DeleteOwned_G(m_Vertices);
}
ExpeditionPolygon::~ExpeditionPolygon()
{
    DeleteOwned_G(m_Vertices);
}

ExpeditionBoard::~ExpeditionBoard()
{
    DeleteOwned_G(m_Contours);
    delete m_Outline;
}

ExpeditionFootprint::~ExpeditionFootprint()
{
    DeleteOwned_G(m_Traces);
    DeleteOwned_G(m_Vias);
    DeleteOwned_G(m_Texts);
    DeleteOwned_G(m_Shapes);
    DeleteOwned_G(m_Pins);
}

ExpeditionPad::~ExpeditionPad()
{
    delete m_Shape;
}

ExpeditionComponent::~ExpeditionComponent()
{
    DeleteOwned_G(m_Texts);
    DeleteOwned_G(m_Shapes);
    DeleteOwned_G(m_Pins);
}

namespace
{
AString NetKey(const AString& name)
{
    if (name.CompareNoCase(L"(net0)") == 0 || name.CompareNoCase(L"UNCONNECTED_NET") == 0)
        return AString(L"DUMMY");
    return name;
}
} // namespace

ExpeditionLayoutNet::ExpeditionLayoutNet(const AString& name, const std::vector<ExpeditionTrace*>& traces,
                                         const std::vector<ExpeditionVia*>& vias,
                                         const std::vector<ExpeditionShapes*>& shapes)
    : m_Name(NetKey(name)), m_Traces(traces), m_Vias(vias), m_Shapes(shapes)
{
}

ExpeditionLayoutNet::~ExpeditionLayoutNet()
{
    ReleaseCopper();
}

void ExpeditionLayoutNet::ReleaseCopper()
{
    DeleteOwned_G(m_Shapes);
    for (auto it = m_ShapesWithVoids.rbegin(); it != m_ShapesWithVoids.rend(); ++it)
        DeleteOwned_G(*it);
    m_ShapesWithVoids.clear();
    DeleteOwned_G(m_Vias);
    DeleteOwned_G(m_Traces);
    m_PlaneShapes.clear();
    m_PlaneOutlines.clear();
    m_PlaneLines.clear();
}
