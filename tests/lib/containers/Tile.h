// Tile.h - a test element with an id and a box, indexed through GetBBox().
#pragma once

#include "lib/math/geometry/Box.h"

#include <ostream>
#include <random>

namespace tree_check
{
struct Tile
{
    int m_Id = 0;
    geom::Box m_Box;

    geom::Box GetBBox() const { return m_Box; }
    bool operator==(const Tile& other) const { return m_Id == other.m_Id && m_Box == other.m_Box; }
};

inline std::ostream& operator<<(std::ostream& out, const Tile& tile)
{
    return out << "#" << tile.m_Id;
}

// A tile of random place and size on a 1000 by 1000 field; now and then a
// single point, since degenerate boxes are common among straight edges.
inline Tile RandomTile(int id, std::mt19937& random)
{
    std::uniform_real_distribution<double> where(0.0, 1000.0);
    std::uniform_real_distribution<double> size(0.0, 60.0);
    const double x = where(random), y = where(random);
    const bool point = random() % 8 == 0;
    const double w = point ? 0.0 : size(random), h = point ? 0.0 : size(random);
    return Tile{id, geom::Box(geom::Unit(x), geom::Unit(x + w), geom::Unit(y), geom::Unit(y + h))};
}
} // namespace tree_check
