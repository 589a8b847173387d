#!/usr/bin/env python3
"""Generate a synthetic Mentor Expedition ASCII job for benchmarks and tests.

Usage:
    python3 bench/generate_job.py OUTDIR --size-mb N [--seed S] [--layers L]
        [--planes-file] [--no-netclass] [--no-pdb-values] [--summary]

The job has JobPrefs.hkp, Padstack.hkp, Cell.hkp, Layout.hkp, PDB.hkp and,
unless switched off, NetClass.hkp; with --planes-file also Planes.hkp.
Layout.hkp comes out at about N megabytes: the number of placed parts is
chosen from a small pilot design with the same settings, and nets, traces,
vias and plane voids grow with it. Everything follows from the seed
(random.Random), so two runs with the same arguments write the same bytes.

Geometry: parts are packed in rows inside the board with a gap between their
courtyards (which include their fan-out vias and the clearance around them),
so parts do not overlap and no two plane voids overlap. Every trace ends on a
pin or a via of its own net: surface pins fan out to a via on their mount
layer, and the members of a signal net are chained by traces on the inner
signal layers. Traces of different nets may cross; no router is attempted.

Besides the job the generator writes generator_summary.json into OUTDIR with
the counts that the translator's output should show (placed components,
nets, traces, vias, plane voids).

Standard library only.
"""

import argparse
import json
import math
import os
import random
import sys

# ---------------------------------------------------------------------------
# Constants (lengths in micrometres unless the name says otherwise)

VIA_PADSTACK = "VIA0.20-0.45"
VIA_PAD_R = 225
VOID_VIA = 425            # clearance void of a via of another net
TH_CLEARANCE = 250        # added to a through pin's pad for its void
NEG_PEN = 100             # pen of the negative plane shapes
POS_PEN = 0
ROW_GAP = 600             # between courtyards
BOARD_MARGIN = 10000      # from the board edge to the packed area
PLANE_INSET = 1000
ROUTE_INSET = 500
BOARD_CORNER = 3000

DATE = "Sunday, November 22, 2026 09:40 PM"
VERSION = "VX.2.8"
CREATOR = "ExpeditionToTnf bench generator"

BGA_ROWS = "ABCDEFGHJKLMNPRTUVWY"


def fmt_mm(um):
    """Micrometres as a millimetre number without trailing zeros."""
    if um % 1000 == 0:
        return str(um // 1000)
    text = "%.3f" % (um / 1000.0)
    return text.rstrip("0").rstrip(".")


# ---------------------------------------------------------------------------
# Library: pads, padstacks, cells

class Pin:
    __slots__ = ("name", "x", "y", "rot", "padstack", "th", "via", "void")

    def __init__(self, name, x, y, padstack, rot=0, th=False, via=None, void=None):
        self.name = name
        self.x = x
        self.y = y
        self.rot = rot
        self.padstack = padstack
        self.th = th          # through pin: a void on every plane of other nets
        self.via = via        # fan-out via offset (dx, dy) from the pin, or None
        self.void = void      # for through pins: ("circle", r) / ("rect", hx, hy) / ("obround", hx, hy)


class Cell:
    def __init__(self, name, keyword, group, mount, prefix, partnos, pins, body, pad_half,
                 extra_vias=(), roles=None):
        self.name = name
        self.keyword = keyword
        self.group = group
        self.mount = mount
        self.prefix = prefix
        self.partnos = partnos
        self.pins = pins
        self.body = body            # (hx, hy) of the assembly outline
        self.pad_half = pad_half    # largest half extent of a surface pad
        self.extra_vias = list(extra_vias)   # (pin index, dx, dy) vias in a pad
        self.roles = roles          # function(pin index, rng) -> role
        self.bbox = self._courtyard()

    def _courtyard(self):
        xs = [-self.body[0], self.body[0]]
        ys = [-self.body[1], self.body[1]]
        reach_via = VOID_VIA + NEG_PEN // 2 + 100
        for p in self.pins:
            if p.th:
                r = p.void[1] if p.void[0] == "circle" else max(p.void[1], p.void[2])
                r += NEG_PEN // 2 + 100
                xs += [p.x - r, p.x + r]
                ys += [p.y - r, p.y + r]
            else:
                xs += [p.x - self.pad_half, p.x + self.pad_half]
                ys += [p.y - self.pad_half, p.y + self.pad_half]
            if p.via:
                vx, vy = p.x + p.via[0], p.y + p.via[1]
                xs += [vx - reach_via, vx + reach_via]
                ys += [vy - reach_via, vy + reach_via]
        for (i, dx, dy) in self.extra_vias:
            p = self.pins[i]
            xs += [p.x + dx - reach_via, p.x + dx + reach_via]
            ys += [p.y + dy - reach_via, p.y + dy + reach_via]
        return (min(xs), min(ys), max(xs), max(ys))


def role_passive_c(i, rng):
    if i == 0:
        return "power" if rng.random() < 0.6 else "signal"
    return "gnd"


def role_passive_r(i, rng):
    return "signal"


def role_passive_l(i, rng):
    return "power" if i == 0 else "signal"


def role_ic(gnd_pins, power_pins, nc=0.08):
    def role(i, rng):
        if i in gnd_pins:
            return "gnd"
        if i in power_pins:
            return "power"
        return "nc" if rng.random() < nc else "signal"
    return role


def role_bga(n):
    def role(i, rng):
        r = rng.random()
        if r < 0.22:
            return "gnd"
        if r < 0.34:
            return "power"
        if r < 0.42:
            return "nc"
        return "signal"
    return role


def role_header(i, rng):
    return "gnd" if i % 4 == 3 else ("nc" if rng.random() < 0.1 else "signal")


def make_cells():
    cells = []
    # Two-pin passives: fan-out via beyond each pad end.
    for name, px, pad_w, pad_h, via_x, body, ps, partnos in (
            ("SMD_0402", 500, 500, 600, 1300, (500, 250), "SMD0402",
             [("CAP-0402-100N-X7R-16V", "C"), ("RES-0402-10K-1%", "R"), ("RES-0402-33R-1%", "R")]),
            ("SMD_0603", 800, 900, 950, 1800, (800, 400), "SMD0603",
             [("CAP-0603-10U-X5R-10V", "C"), ("IND-0603-2U2", "L"), ("RES-0603-0R", "R")])):
        pins = [Pin("1", -px, 0, ps, via=(-(via_x - px), 0)), Pin("2", px, 0, ps, via=(via_x - px, 0))]
        cells.append(Cell(name, "PACKAGE_CELL", "Discrete", "SURFACE", None, partnos, pins, body,
                          max(pad_w, pad_h) // 2))
    # LED 0805 with custom pads (arrow for the anode, D shape for the
    # cathode) and SOT-23 on octagonal fingers.
    pins = [Pin("1", -1000, 0, "SMD_ARROW", via=(-1000, 0)), Pin("2", 1000, 0, "SMD_D_SHAPE", via=(1000, 0))]
    cells.append(Cell("LED_0805", "PACKAGE_CELL", "Discrete", "SURFACE", "D", [("LED-0805-GRN", "D")], pins,
                      (1000, 625), 600, roles=lambda i, rng: "power" if i == 0 else "signal"))
    pins = [Pin("1", -950, -1100, "SMD_SOIC_OFG", rot=90, via=(0, -1500)),
            Pin("2", 950, -1100, "SMD_SOIC_OFG", rot=90, via=(0, -1500)),
            Pin("3", 0, 1100, "SMD_SOIC_OFG", rot=270, via=(0, 1500))]
    cells.append(Cell("SOT23_P095", "PACKAGE_CELL", "Discrete", "SURFACE", "Q", [("BJT-SOT23-NPN", "Q")], pins,
                      (1450, 650), 775, roles=lambda i, rng: "gnd" if i == 1 else "signal"))
    # SOIC-8 and SOIC-16, 1.27 mm pitch, vias outward of the leads; pin 1
    # of the SOIC-16 on a chamfered pad.
    for name, n, ps, partno in (("SOIC8_127P600", 8, "SMD_SOIC", "LDO-3V3-SOIC8"),
                                ("SOIC16_127P600", 16, "SMD_SOIC_FG", "BUF-SOIC16")):
        half = n // 2
        pins = []
        for k in range(half):
            y = (half - 1) * 635 - k * 1270
            pins.append(Pin(str(k + 1), -2700, y, "SMD_SOIC_CH" if (k == 0 and n == 16) else ps, via=(-1600, 0)))
        for k in range(half):
            y = -(half - 1) * 635 + k * 1270
            pins.append(Pin(str(half + k + 1), 2700, y, ps, via=(1600, 0)))
        body = (1950, (half - 1) * 635 + 800)
        gnd = {half - 1}
        pwr = {n - 1}
        cells.append(Cell(name, "PACKAGE_CELL", "IC_SOIC", "SURFACE", "U", [(partno, "U")], pins, body, 775,
                          roles=role_ic(gnd, pwr)))
    # QFN-32, 5 x 5 mm, 0.5 mm pitch, exposed pad with four vias; lead vias
    # staggered in two rows so that they keep 1 mm apart.
    pins = []
    num = 1
    for side, (ox, oy, dx, dy, rot) in enumerate(((-2400, 0, 0, -1, 0), (0, -2400, 1, 0, 90),
                                                  (2400, 0, 0, 1, 180), (0, 2400, -1, 0, 270))):
        for k in range(8):
            t = 1750 - 500 * k
            x = ox + (dx * -t if dx else 0)
            y = oy + (dy * -t if dy else 0)
            out = 900 if k % 2 == 0 else 1900
            vx = -out if ox < 0 else (out if ox > 0 else 0)
            vy = -out if oy < 0 else (out if oy > 0 else 0)
            pins.append(Pin(str(num), x, y, "SMD_QFN_LEAD", rot=rot, via=(vx, vy)))
            num += 1
    pins.append(Pin(str(num), 0, 0, "SMD_QFN_EP"))
    ep = len(pins) - 1
    cells.append(Cell("QFN32_5X5_P050", "PACKAGE_CELL", "IC_QFN", "SURFACE", "U", [("PHY-QFN32-5X5", "U")],
                      pins, (2500, 2500), 1650,
                      extra_vias=[(ep, -800, -800), (ep, 800, -800), (ep, -800, 800), (ep, 800, 800)],
                      roles=role_ic({ep, 7, 23}, {15, 31})))
    # BGAs at 1 mm pitch, dog-bone vias between the balls.
    for name, n, partno in (("BGA100_P100", 10, "MCU-BGA100"), ("BGA400_P100", 20, "FPGA-BGA400")):
        pins = []
        off = (n - 1) * 500
        for r in range(n):
            for c in range(n):
                pins.append(Pin("%s%d" % (BGA_ROWS[r], c + 1), -off + c * 1000, off - r * 1000,
                                "SMD_BGA_BALL", via=(500, -500)))
        cells.append(Cell(name, "PACKAGE_CELL", "IC_BGA", "SURFACE", "U", [(partno, "U")], pins,
                          (off + 1000, off + 1000), 250, roles=role_bga(n * n)))
    # Headers: 2 x 10 through pins, pin 1 square; 1 x 2 with a slotted lead.
    pins = []
    for k in range(10):
        x = -11430 + k * 2540
        for row, y in ((0, 1270), (1, -1270)):
            number = k * 2 + row + 1
            if number == 1:
                pins.append(Pin("1", x, y, "PTH1.70SQ-1.00", th=True, void=("rect", 1100, 1100)))
            else:
                pins.append(Pin(str(number), x, y, "PTH1.70-1.00", th=True, void=("circle", 1100)))
    cells.append(Cell("HDR_2X10_P254", "PACKAGE_CELL", "Connector", "THROUGH", "J", [("HDR-2X10-P254", "J")],
                      pins, (12700, 2540), 0, roles=role_header))
    pins = [Pin("1", -1270, 0, "PTH1.70EOCT-1.00", th=True, void=("circle", 1100)),
            Pin("2", 1270, 0, "PTH1.70X2.40-SLOT", th=True, void=("obround", 1100, 1450))]
    cells.append(Cell("HDR_1X2_P254", "PACKAGE_CELL", "Connector", "THROUGH", "J", [("HDR-1X2-P254-SLOT", "J")],
                      pins, (2540, 1270), 0, roles=lambda i, rng: "power" if i == 0 else "gnd"))
    mtg = Cell("MTG_M3", "MECHANICAL_CELL", "Mechanical", "THROUGH", "H", [("MTG-M3-PLATED", "H")],
               [Pin("1", 0, 0, "MTG3.20", th=True, void=("circle", 3500))], (3300, 3300), 0,
               roles=lambda i, rng: "gnd")
    cells.append(mtg)
    return cells


# Weights of the placed cells (mounting holes are placed by themselves).
CELL_WEIGHTS = [("SMD_0402", 34), ("SMD_0603", 24), ("SOIC8_127P600", 8), ("SOIC16_127P600", 5),
                ("QFN32_5X5_P050", 5), ("BGA100_P100", 1.6), ("BGA400_P100", 0.5),
                ("HDR_2X10_P254", 1.5), ("HDR_1X2_P254", 1.5), ("LED_0805", 3), ("SOT23_P095", 5)]


# ---------------------------------------------------------------------------
# Stack-up

def make_stackup(layers):
    planes = {2, layers - 1}
    for i in range(4, layers - 2):
        if i % 4 == 0:
            planes.add(i)
    plane_layers = sorted(planes)
    power_nets = ["+3V3", "+1V8", "+1V0", "+5V", "+2V5", "+1V2"]
    assignment = []   # (conductive number, net, negative)
    pi = 0
    gnd_seen = 0
    for k, lay in enumerate(plane_layers):
        if k % 2 == 0:
            assignment.append((lay, "GND", gnd_seen == 0))
            gnd_seen += 1
        else:
            assignment.append((lay, power_nets[pi % len(power_nets)], False))
            pi += 1
    signals = [i for i in range(1, layers + 1) if i not in planes]
    return plane_layers, assignment, signals


# ---------------------------------------------------------------------------
# Design

class Part:
    __slots__ = ("cell", "ref", "partno", "x", "y", "rot", "bottom", "nets", "pid", "vias")


def transform(part, x, y):
    if part.bottom:
        x = -x
    r = part.rot
    if r == 90:
        x, y = -y, x
    elif r == 180:
        x, y = -x, -y
    elif r == 270:
        x, y = y, -x
    return part.x + x, part.y + y


def rotated_bbox(cell, rot, bottom):
    x0, y0, x1, y1 = cell.bbox
    if bottom:
        x0, x1 = -x1, -x0
    if rot == 0:
        return x0, y0, x1, y1
    if rot == 90:
        return -y1, x0, -y0, x1
    if rot == 180:
        return -x1, -y1, -x0, -y0
    return y0, -x1, y1, -x0


class Design:
    pass


def part_height(p):
    bx0, by0, bx1, by1 = rotated_bbox(p.cell, p.rot, p.bottom)
    return by1 - by0


def pack_rows(parts, width):
    """Places the parts in rows from the lower left, each row as high as its
    highest part; returns the height of the packed area."""
    x = y = BOARD_MARGIN
    row_h = 0
    for p in parts:
        bx0, by0, bx1, by1 = rotated_bbox(p.cell, p.rot, p.bottom)
        w = bx1 - bx0
        if x + w > BOARD_MARGIN + width and x > BOARD_MARGIN:
            x = BOARD_MARGIN
            y += row_h + ROW_GAP
            row_h = 0
        p.x = x - bx0
        p.y = y - by0
        x += w + ROW_GAP
        row_h = max(row_h, by1 - by0)
    return y + row_h - BOARD_MARGIN


def build_design(rng, nparts, layers):
    cells = make_cells()
    by_name = {c.name: c for c in cells}
    plane_layers, plane_assign, signal_layers = make_stackup(layers)
    inner_signals = [s for s in signal_layers if s not in (1, layers)]
    plane_nets = []
    for (_, net, _) in plane_assign:
        if net not in plane_nets:
            plane_nets.append(net)
    power_nets = [n for n in plane_nets if n != "GND"] or ["GND"]

    names = [n for n, _ in CELL_WEIGHTS]
    weights = [w for _, w in CELL_WEIGHTS]
    chosen = rng.choices(names, weights=weights, k=nparts)

    # Footprint choice, side and rotation; then row packing.
    parts = []
    counters = {}
    area = 0
    for cname in chosen:
        cell = by_name[cname]
        p = Part()
        p.cell = cell
        partno, prefix = cell.partnos[rng.randrange(len(cell.partnos))]
        p.partno = partno
        counters[prefix] = counters.get(prefix, 0) + 1
        p.ref = "%s%d" % (prefix, counters[prefix])
        p.rot = rng.choice((0, 90, 180, 270))
        p.bottom = cell.mount == "SURFACE" and cname in ("SMD_0402", "SMD_0603", "SOIC8_127P600", "SOT23_P095", "LED_0805") \
            and rng.random() < 0.3
        bx0, by0, bx1, by1 = rotated_bbox(cell, p.rot, p.bottom)
        area += (bx1 - bx0 + ROW_GAP) * (by1 - by0 + ROW_GAP)
        parts.append(p)
    # Rows of parts of like height, tallest first (the big parts end up in
    # the first rows, the passives in the last), in a packed area about as
    # wide as it is high.
    parts.sort(key=lambda p: -part_height(p))
    width = int(math.sqrt(area * 1.12)) + 20000
    for _ in range(6):
        width = (width // 1000 + 1) * 1000
        height = pack_rows(parts, width)
        if 0.85 <= height / float(width) <= 1.18:
            break
        width = int(math.sqrt(width * float(height)))
    width = (width // 1000 + 1) * 1000 if width % 1000 else width
    height = pack_rows(parts, width)
    y = BOARD_MARGIN + height
    row_h = 0
    board_w = BOARD_MARGIN + width + BOARD_MARGIN
    board_h = ((y + BOARD_MARGIN) // 1000 + 1) * 1000

    # Mounting holes in the corners, outside the packed area.
    mtg = by_name["MTG_M3"]
    for k, (mx, my) in enumerate(((5000, 5000), (board_w - 5000, 5000), (board_w - 5000, board_h - 5000),
                                   (5000, board_h - 5000))):
        p = Part()
        p.cell = mtg
        p.partno = mtg.partnos[0][0]
        p.ref = "H%d" % (k + 1)
        p.rot = 0
        p.bottom = False
        p.x, p.y = mx, my
        parts.append(p)

    # Nets: pins get roles; signal pins join a recent open net or open a new one.
    members = {}          # net -> list of endpoints (x, y) in order
    sizes = {}            # signal net -> pins so far, while the roles are given
    limits = {}           # signal net -> most pins it may get
    fanouts = {}          # net -> list of (layer, (x0, y0), (x1, y1))
    vias = {}             # net -> list of (x, y)
    open_nets = []
    net_counter = 0
    pin_nets = []
    for pid, p in enumerate(parts):
        p.pid = 1001 + pid
        role_fn = p.cell.roles
        nets = []
        for i, pin in enumerate(p.cell.pins):
            if role_fn is None:
                if p.cell.partnos and p.partno.startswith("CAP"):
                    role = role_passive_c(i, rng)
                elif p.partno.startswith("IND"):
                    role = role_passive_l(i, rng)
                else:
                    role = role_passive_r(i, rng)
            else:
                role = role_fn(i, rng)
            if role == "gnd":
                net = "GND"
            elif role == "power":
                net = power_nets[rng.randrange(len(power_nets))]
            elif role == "signal":
                live = [n for n in open_nets[-8:] if sizes[n] < limits[n]]
                if live and rng.random() < 0.55:
                    net = live[rng.randrange(len(live))]
                else:
                    net_counter += 1
                    net = "N%05d" % net_counter
                    sizes[net] = 0
                    limits[net] = rng.choice((2, 2, 2, 3, 3, 4, 6))
                    open_nets.append(net)
                sizes[net] += 1
            else:
                net = None
            nets.append(net)
        p.nets = nets
    # Drop signal nets that kept a single pin: their pin stays unconnected.
    count = {}
    for p in parts:
        for n in p.nets:
            if n:
                count[n] = count.get(n, 0) + 1
    for p in parts:
        p.nets = [n if (n and (count[n] > 1 or n in plane_nets)) else None for n in p.nets]

    mount_top, mount_bottom = 1, layers
    th_voids = []         # (net, kind, x, y, a, b) through pins, net None if unconnected
    for p in parts:
        layer = mount_bottom if p.bottom else mount_top
        for i, pin in enumerate(p.cell.pins):
            net = p.nets[i]
            px, py = transform(p, pin.x, pin.y)
            if pin.th:
                kind = pin.void
                if kind[0] == "circle":
                    th_voids.append((net, "circle", px, py, kind[1], kind[1]))
                else:
                    a, b = kind[1], kind[2]
                    if p.rot in (90, 270):
                        a, b = b, a
                    th_voids.append((net, kind[0], px, py, a, b))
                if net:
                    members.setdefault(net, []).append((px, py))
                continue
            if net is None:
                continue
            if pin.via:
                vx, vy = transform(p, pin.x + pin.via[0], pin.y + pin.via[1])
                vias.setdefault(net, []).append((vx, vy))
                fanouts.setdefault(net, []).append((layer, (px, py), (vx, vy)))
                members.setdefault(net, []).append((vx, vy))
        for (i, dx, dy) in p.cell.extra_vias:
            net = p.nets[i]
            if net:
                pin = p.cell.pins[i]
                vx, vy = transform(p, pin.x + dx, pin.y + dy)
                vias.setdefault(net, []).append((vx, vy))

    # Chains of signal nets on the inner layers.
    routes = {}           # net -> list of (layer, kind, points); kind "line" or "arc"
    net_order = []
    for net in sorted(members):
        pts = members[net]
        if net in plane_nets:
            continue
        if len(pts) < 2:
            continue
        net_order.append(net)
        rl = []
        for a, b in zip(pts, pts[1:]):
            rl.append(route(rng, inner_signals, a, b))
        routes[net] = rl
    for net in plane_nets:
        if net not in net_order:
            net_order.append(net)
    # GND goes last: its block ends with conductive areas (see write_layout).
    net_order.remove("GND")
    net_order.append("GND")

    d = Design()
    d.layers = layers
    d.cells = cells
    d.parts = parts
    d.board = (board_w, board_h)
    d.plane_layers = plane_layers
    d.plane_assign = plane_assign
    d.signal_layers = signal_layers
    d.inner_signals = inner_signals
    d.plane_nets = plane_nets
    d.net_order = net_order
    d.routes = routes
    d.fanouts = fanouts
    d.vias = vias
    d.th_voids = th_voids
    return d


def route(rng, layers, a, b):
    layer = layers[rng.randrange(len(layers))]
    ax, ay = a
    bx, by = b
    dx, dy = bx - ax, by - ay
    if abs(dx) >= 1200 and abs(dy) >= 1200 and rng.random() < 0.3:
        r = 500
        ux = 1 if dx > 0 else -1
        vy = 1 if dy > 0 else -1
        cx, cy = bx, ay
        s = (cx - r * ux, cy)
        e = (cx, cy + r * vy)
        c = (cx - r * ux, cy + r * vy)
        sign = 1 if ux * vy > 0 else -1
        return (layer, "arc", [(ax, ay, 0), (s[0], s[1], 0), (c[0], c[1], sign * r), (e[0], e[1], 0),
                               (bx, by, 0)])
    if abs(dx) >= 1000 and abs(dy) >= 1000 and rng.random() < 0.6:
        # A staircase of 2 to 4 steps: 4 to 8 segments.
        steps = rng.randint(2, 4)
        pts = [(ax, ay)]
        py = ay
        for i in range(1, steps + 1):
            px = ax + dx * i // steps
            pts.append((px, py))
            py = ay + dy * i // steps
            pts.append((px, py))
        return (layer, "line", pts)
    if abs(dx) >= abs(dy):
        m = (bx - (1 if dx > 0 else -1) * abs(dy), ay)
    else:
        m = (ax, by - (1 if dy > 0 else -1) * abs(dx))
    pts = [(ax, ay)]
    if m != (ax, ay) and m != (bx, by):
        pts.append(m)
    pts.append((bx, by))
    return (layer, "line", pts)


# ---------------------------------------------------------------------------
# Writers

def header(filetype):
    return [".FILETYPE %s" % filetype, ".VERSION \"%s\"" % VERSION, ".CREATOR \"%s\"" % CREATOR,
            ".DATE \"%s\"" % DATE, ""]


def write_jobprefs(d):
    L = d.layers
    out = header("JOB_PREFERENCES")
    out += ["! Job preferences, %d conductive layers" % L, "! Lengths in thousandths of an inch", "",
            ".UNITS TH", "", ".PHYSICAL_LAYERS %d" % L, ".JOB_OPTIONS BLIND_BURIED_VIAS_OFF", "",
            ".LAYER_STACKUP_SECTION"]
    planes = dict((lay, (net, neg)) for lay, net, neg in d.plane_assign)
    copper = sum(1.9 if i in (1, L) else 1.4 for i in range(1, L + 1))
    diel = max(2.0, (63.0 - copper - 1.6) / (L - 1))
    number = 1

    def dielectric(desc, thick, er, tech):
        nonlocal number
        out.extend(["..DIELECTRIC_LAYER %d" % number, "...LAYER_DESCRIPTION \"%s\"" % desc,
                    "...LAYER_THICKNESS %.2f" % thick, "...DIELECTRIC_CONSTANT %s" % er,
                    "...LAYER_TECHNOLOGY \"%s\"" % tech])
        number += 1

    dielectric("Soldermask Top", 0.8, "3.5", "LPI")
    first_power = True
    for i in range(1, L + 1):
        if i in planes:
            net, neg = planes[i]
            out.append("..PLANE_LAYER %d" % number)
            out.append("...CONDUCTIVE_LAYER_NUMBER %d" % i)
            if net == "GND":
                out.append("...LAYER_DESCRIPTION \"GND\"")
            elif not first_power:
                out.append("...LAYER_DESCRIPTION \"PWR\"")
            else:
                first_power = False   # no description: the layer is called PLANE_<n>
            out += ["...LAYER_THICKNESS 1.4", "...LAYER_RESISTIVITY 1.72",
                    "...PLANE_TYPE %s" % ("NEGATIVE" if neg else "POSITIVE"),
                    "...PLANE_NET \"%s\"" % net, "....PLANE_NET_CLEARANCE 10", "....USE_ROUTE_BORDER Yes"]
        else:
            desc = "Top" if i == 1 else ("Bottom" if i == L else "Inner")
            out += ["..SIGNAL_LAYER %d" % number, "...CONDUCTIVE_LAYER_NUMBER %d" % i,
                    "...LAYER_DESCRIPTION \"%s\"" % desc,
                    "...LAYER_THICKNESS %s" % ("1.9" if i in (1, L) else "1.4"),
                    "...LAYER_RESISTIVITY 1.72", "...LAYER_TECHNOLOGY \"(Default)\""]
        number += 1
        if i < L:
            if i % 2 == 1:
                dielectric("Prepreg 2116", diel, "4.2", "FR-4")
            else:
                dielectric("Core FR-4", diel, "4.6", "FR-4")
    dielectric("Soldermask Bottom", 0.8, "3.5", "LPI")
    out += ["..ALLOW_BURIED_RESISTORS No", "", ".USER_DEFINED_LAYERS_SECTION",
            "..USER_LAYER_NAME \"Assembly Notes\"", "...USER_LAYER_NUMBER 1",
            "..USER_LAYER_NAME \"Fab Drawing\"", "...USER_LAYER_NUMBER 2", "",
            ".DEFAULT_VIA_CONNECTIONS", "..TIE_LEG_WIDTH 6", "..TIE_LEG_NUMBER_OPTION FOUR_LEGS",
            "..TIE_LEG_ROTATION_OPTION ROTATE_45",
            ".DEFAULT_THRU_PAD_CONNECTIONS", "..TIE_LEG_WIDTH 12", "..TIE_LEG_NUMBER_OPTION FOUR_LEGS",
            "..TIE_LEG_ROTATION_OPTION ORTHOGONAL",
            ".DEFAULT_SMD_PAD_CONNECTIONS", "..TIE_LEG_WIDTH 8", "..TIE_LEG_NUMBER_OPTION TWO_LEGS",
            "..TIE_LEG_ROTATION_OPTION ORTHOGONAL", "",
            ".TP_ASSIGNMENT_SECTION", "..TP_PADSTACK \"%s\"" % VIA_PADSTACK, "...TP_SIDE BOTTOM",
            "..TP_NET \"GND\""]
    return "\n".join(out) + "\n"


def pad(name, shape, params, extra=()):
    lines = [".PAD \"%s\"" % name, "..PAD_OPTIONS USER_GENERATED_NAME", "..OFFSET (0, 0)", "..%s" % shape]
    lines += ["...%s %s" % (k, v) for k, v in params]
    lines += list(extra)
    lines.append("")
    return lines


def padstack(name, kind, entries, hole=None):
    lines = [".PADSTACK \"%s\"" % name, "..PADSTACK_TYPE %s" % kind, "..TECHNOLOGY \"(Default)\"",
             "...TECHNOLOGY_OPTIONS NONE"]
    lines += ["...%s" % e for e in entries]
    if hole:
        lines += ["...HOLE_NAME \"%s\"" % hole, "....OFFSET (0, 0)"]
    lines.append("")
    return lines


def write_padstack(d):
    out = header("PADSTACK_LIBRARY")
    out += ["! Holes, pads and padstacks", "", ".UNITS MM", "", "! Holes", ""]
    for name, kind, params in (("H0.20P", "ROUND", [("DIAMETER", "0.2")]),
                               ("H1.00P", "ROUND", [("DIAMETER", "1")]),
                               ("H3.20P", "ROUND", [("DIAMETER", "3.2")]),
                               ("SLOT0.90X1.60P", "SLOT", [("WIDTH", "0.9"), ("LENGTH", "1.6")])):
        out += [".HOLE \"%s\"" % name, "..POSITIVE_TOLERANCE 0.05", "..NEGATIVE_TOLERANCE 0.05",
                "..HOLE_OPTIONS PLATED DRILLED USER_GENERATED_NAME", "..%s" % kind]
        out += ["...%s %s" % (k, v) for k, v in params]
        out.append("")
    out += ["! Pads", ""]
    for d_ in ("0.45", "0.5", "0.6", "0.85", "1.7", "2.2", "6", "7"):
        out += pad("RD%s" % d_, "ROUND", [("DIAMETER", d_)])
    out += pad("SQ1.70", "SQUARE", [("WIDTH", "1.7")])
    for w, h in (("0.5", "0.6"), ("0.6", "0.7"), ("0.9", "0.95"), ("1", "1.05"), ("1.55", "0.6"), ("1.65", "0.7")):
        out += pad("RC%sX%s" % (w, h), "RECTANGLE", [("WIDTH", w), ("HEIGHT", h)])
    out += pad("OB1.70X2.40", "OBLONG", [("WIDTH", "1.7"), ("HEIGHT", "2.4")])
    out += pad("OB2.20X2.90", "OBLONG", [("WIDTH", "2.2"), ("HEIGHT", "2.9")])
    out += pad("OCT6.00", "OCTAGON", [("DIAMETER", "6")])
    out += pad("EOCT1.70X1.70", "ELONGATED_OCTAGON", [("WIDTH", "1.7"), ("HEIGHT", "1.7")])
    out += pad("OFG1.55X0.60", "OCTAGONAL_FINGER", [("WIDTH", "1.55"), ("HEIGHT", "0.6")])
    out += pad("FG1.55X0.60", "ROUND_FINGER", [("WIDTH", "1.55"), ("HEIGHT", "0.6")])
    out += pad("RRC3.20X3.20R0.20", "RADIUS_CORNER_RECTANGLE",
               [("WIDTH", "3.2"), ("HEIGHT", "3.2"), ("CORNER_RADIUS", "0.2")])
    out += pad("CH3.30X3.30C0.25", "CHAMFERED_RECTANGLE",
               [("WIDTH", "3.3"), ("HEIGHT", "3.3"), ("CHAMFER", "0.25")])
    out += pad("CH1.55X0.60C0.15", "CHAMFERED_RECTANGLE",
               [("WIDTH", "1.55"), ("HEIGHT", "0.6"), ("CHAMFER", "0.15")])
    out += ["! Thermal reliefs", ""]
    for name, kind, outer, inner, tie, clr in (
            ("TH0.85-0.45", "4_WEB_ROUND_THERMAL_45", "0.85", "0.45", "0.15", "0.2"),
            ("TH2.20-1.70", "4_WEB_ROUND_THERMAL", "2.2", "1.7", "0.3", "0.25"),
            ("TH2.20-1.70-2W", "2_WEB_ROUND_THERMAL", "2.2", "1.7", "0.3", "0.25"),
            ("TH2.20-1.70-SQ", "4_WEB_SQUARE_THERMAL", "2.2", "1.7", "0.3", "0.25"),
            ("TH7.00-6.00", "4_WEB_ROUND_THERMAL", "7", "6", "0.5", "0.5"),
            ("DN2.20-1.70", "ROUND_DONUT", "2.2", "1.7", "0", "0"),
            ("SDN2.20-1.70", "SQUARE_DONUT", "2.2", "1.7", "0", "0")):
        out += pad(name, kind, [("OUTER_DIAMETER", outer), ("INNER_DIAMETER", inner),
                                ("TIE_LEG_WIDTH", tie), ("THERMAL_CLEARANCE", clr)])
    out += ["! Custom pads", "",
            ".PAD \"QFN_LEAD_0.84X0.28\"", "..OFFSET (0, 0)", "..CUSTOM", "...RECT_PATH", "....WIDTH 0",
            "....XY (-0.35, -0.14) (0.35, 0.14)", "...CIRCLE_SHAPE", "....XY (0.35, 0)", "....RADIUS 0.14",
            "....SHAPE_OPTIONS FILLED", "..PAD_OPTIONS USER_GENERATED_NAME", "",
            ".PAD \"D_SHAPE_1.20\"", "..OFFSET (0, 0)", "..CUSTOM", "...POLYARC_SHAPE",
            "....XYR (-0.6, -0.6, 0) (0, -0.6, 0) (0, 0, 0.6) (0, 0.6, 0) (-0.6, 0.6, 0) (-0.6, -0.6, 0)",
            "....SHAPE_OPTIONS FILLED", "..PAD_OPTIONS USER_GENERATED_NAME", "",
            ".PAD \"ARROW_1.00\"", "..OFFSET (0, 0)", "..CUSTOM", "...POLYLINE_SHAPE",
            "....XY (-0.5, -0.3) (0.2, -0.3) (0.5, 0) (0.2, 0.3) (-0.5, 0.3) (-0.5, -0.3)",
            "....SHAPE_OPTIONS FILLED", "..PAD_OPTIONS USER_GENERATED_NAME", "",
            ".PAD \"TWIN_DOTS_0.40\"", "..OFFSET (0, 0)", "..CUSTOM", "...CIRCLE_SHAPE", "....XY (-0.5, 0)",
            "....RADIUS 0.2", "....SHAPE_OPTIONS FILLED", "...CIRCLE_SHAPE", "....XY (0.5, 0)",
            "....RADIUS 0.2", "....SHAPE_OPTIONS FILLED", "..PAD_OPTIONS USER_GENERATED_NAME", ""]
    out += ["! Padstacks", ""]
    out += padstack(VIA_PADSTACK, "VIA", ["TOP_PAD \"RD0.45\"", "INTERNAL_PAD \"RD0.45\"",
                                          "BOTTOM_PAD \"RD0.45\"", "CLEARANCE_PAD \"RD0.85\"",
                                          "THERMAL_PAD \"TH0.85-0.45\""], "H0.20P")
    out += padstack("SMD0402", "PIN_SMD", ["TOP_PAD \"RC0.5X0.6\"", "TOP_SOLDERPASTE_PAD \"RC0.5X0.6\"",
                                           "TOP_SOLDERMASK_PAD \"RC0.6X0.7\""])
    out += padstack("SMD0603", "PIN_SMD", ["TOP_PAD \"RC0.9X0.95\"", "TOP_SOLDERPASTE_PAD \"RC0.9X0.95\"",
                                           "TOP_SOLDERMASK_PAD \"RC1X1.05\""])
    out += padstack("SMD_SOIC", "PIN_SMD", ["TOP_PAD \"RC1.55X0.6\"", "TOP_SOLDERMASK_PAD \"RC1.65X0.7\""])
    out += padstack("SMD_SOIC_FG", "PIN_SMD", ["TOP_PAD \"FG1.55X0.60\"", "TOP_SOLDERMASK_PAD \"RC1.65X0.7\""])
    out += padstack("SMD_SOIC_CH", "PIN_SMD", ["TOP_PAD \"CH1.55X0.60C0.15\"",
                                               "TOP_SOLDERMASK_PAD \"RC1.65X0.7\""])
    out += padstack("SMD_SOIC_OFG", "PIN_SMD", ["TOP_PAD \"OFG1.55X0.60\"",
                                                "TOP_SOLDERMASK_PAD \"RC1.65X0.7\""])
    out += padstack("SMD_QFN_LEAD", "PIN_SMD", ["TOP_PAD \"QFN_LEAD_0.84X0.28\"",
                                                "TOP_SOLDERMASK_PAD \"QFN_LEAD_0.84X0.28\""])
    out += padstack("SMD_QFN_EP", "PIN_SMD", ["TOP_PAD \"RRC3.20X3.20R0.20\"",
                                              "TOP_SOLDERMASK_PAD \"CH3.30X3.30C0.25\""])
    out += padstack("SMD_BGA_BALL", "PIN_SMD", ["TOP_PAD \"RD0.5\"", "TOP_SOLDERMASK_PAD \"RD0.6\""])
    out += padstack("SMD_D_SHAPE", "PIN_SMD", ["TOP_PAD \"D_SHAPE_1.20\""])
    out += padstack("SMD_ARROW", "PIN_SMD", ["TOP_PAD \"ARROW_1.00\""])
    out += padstack("PTH1.70SQ-1.00", "PIN_THROUGH",
                    ["TOP_PAD \"SQ1.70\"", "INTERNAL_PAD \"RD1.7\"", "BOTTOM_PAD \"SQ1.70\"",
                     "TOP_SOLDERMASK_PAD \"SQ1.70\"", "BOTTOM_SOLDERMASK_PAD \"SQ1.70\"",
                     "CLEARANCE_PAD \"RD2.2\"", "THERMAL_PAD \"TH2.20-1.70-SQ\""], "H1.00P")
    out += padstack("PTH1.70-1.00", "PIN_THROUGH",
                    ["TOP_PAD \"RD1.7\"", "INTERNAL_PAD \"RD1.7\"", "BOTTOM_PAD \"RD1.7\"",
                     "TOP_SOLDERMASK_PAD \"RD1.7\"", "BOTTOM_SOLDERMASK_PAD \"RD1.7\"",
                     "CLEARANCE_PAD \"RD2.2\"", "THERMAL_PAD \"TH2.20-1.70\""], "H1.00P")
    out += padstack("PTH1.70EOCT-1.00", "PIN_THROUGH",
                    ["TOP_PAD \"EOCT1.70X1.70\"", "INTERNAL_PAD \"RD1.7\"", "BOTTOM_PAD \"EOCT1.70X1.70\"",
                     "CLEARANCE_PAD \"RD2.2\"", "THERMAL_PAD \"TH2.20-1.70-2W\""], "H1.00P")
    inner = ["LAYER %d" % k for k in d.signal_layers if k not in (1, d.layers)][:1]
    entries = ["TOP_PAD \"OB1.70X2.40\"", "INTERNAL_PAD \"OB1.70X2.40\"", "BOTTOM_PAD \"OB1.70X2.40\""]
    for lay in inner:
        entries += [lay, ".PAD_NAME \"OB1.70X2.40\""]
    entries += ["TOP_SOLDERMASK_PAD \"OB1.70X2.40\"", "BOTTOM_SOLDERMASK_PAD \"OB1.70X2.40\"",
                "CLEARANCE_PAD \"OB2.20X2.90\"", "THERMAL_PAD \"DN2.20-1.70\""]
    out += padstack("PTH1.70X2.40-SLOT", "PIN_THROUGH", entries, "SLOT0.90X1.60P")
    out += padstack("MTG3.20", "MOUNTING_HOLE",
                    ["TOP_PAD \"OCT6.00\"", "INTERNAL_PAD \"RD6\"", "BOTTOM_PAD \"OCT6.00\"",
                     "CLEARANCE_PAD \"RD7\"", "THERMAL_PAD \"TH7.00-6.00\""], "H3.20P")
    out += padstack("TWIN_DOTS", "PIN_SMD", ["TOP_PAD \"TWIN_DOTS_0.40\""])
    return "\n".join(out).rstrip("\n") + "\n"


def write_cells(d):
    out = header("CELL_LIBRARY")
    out += ["! Cells", "", ".UNITS MM", ""]
    for c in d.cells:
        out += [".%s \"%s\"" % (c.keyword, c.name), "..PACKAGE_GROUP \"%s\"" % c.group,
                "..MOUNT_TYPE %s" % c.mount, "..NUMBER_LAYERS 2"]
        for p in c.pins:
            out += ["..PIN \"%s\"" % p.name, "...PADSTACK \"%s\"" % p.padstack,
                    "...XY (%s, %s)" % (fmt_mm(p.x), fmt_mm(p.y)), "...ROTATION %d" % p.rot]
        hx, hy = c.body
        out += ["..ASSEMBLY_OUTLINE", "...POLYLINE_PATH", "....WIDTH 0.1",
                "....XY (%s, %s) (%s, %s) (%s, %s) (%s, %s) (%s, %s)" % (
                    fmt_mm(-hx), fmt_mm(-hy), fmt_mm(hx), fmt_mm(-hy), fmt_mm(hx), fmt_mm(hy),
                    fmt_mm(-hx), fmt_mm(hy), fmt_mm(-hx), fmt_mm(-hy))]
        if c.keyword == "MECHANICAL_CELL":
            out += ["..SILKSCREEN_OUTLINE", "...CIRCLE_PATH", "....WIDTH 0.15", "....XY (0, 0)",
                    "....RADIUS %s" % fmt_mm(hx)]
        else:
            out += ["..SILKSCREEN_OUTLINE", "...POLYARC_PATH", "....WIDTH 0.15",
                    "....XYR (%s, %s, 0) (-0.3, %s, 0) (0, %s, 0.3) (0.3, %s, 0) (%s, %s, 0)" % (
                        fmt_mm(-hx), fmt_mm(hy + 150), fmt_mm(hy + 150), fmt_mm(hy + 150), fmt_mm(hy + 150),
                        fmt_mm(hx), fmt_mm(hy + 150))]
        x0, y0, x1, y1 = c.bbox
        out += ["..PLACEMENT_OUTLINE", "...HEIGHT 1", "...UNDERSIDE_SPACE 0", "...RECT_PATH", "....WIDTH 0",
                "....XY (%s, %s) (%s, %s)" % (fmt_mm(x0), fmt_mm(y0), fmt_mm(x1), fmt_mm(y1)),
                "..TEXT \"RefDes\"", "...TEXT_TYPE REF_DES", "...DISPLAY_ATTR",
                "....XY (0, %s)" % fmt_mm(hy + 600), "....TEXT_LYR SILKSCREEN_MNT_LYR", "....HEIGHT 0.8",
                "....STROKE_WIDTH 0.1", "....ROTATION 0", "....HORZ_JUST CENTER", "....VERT_JUST CENTER",
                "....FONT \"VeriBest Gerber 0\"", "....TEXT_OPTIONS NONE", ""]
    return "\n".join(out).rstrip("\n") + "\n"


def obround_xyr(x, y, a, b):
    """An obround of half sizes a (x) and b (y) around (x, y), as XYR triples, closed."""
    if b >= a:
        r = a
        s = b - a
        pts = [(x - r, y - s, 0), (x - r, y + s, 0), (x, y + s, -r), (x + r, y + s, 0), (x + r, y - s, 0),
               (x, y - s, -r), (x - r, y - s, 0)]
    else:
        r = b
        s = a - b
        pts = [(x - s, y - r, 0), (x + s, y - r, 0), (x + s, y, r), (x + s, y + r, 0), (x - s, y + r, 0),
               (x - s, y, r), (x - s, y - r, 0)]
    return pts


def rounded_rect_xyr(x0, y0, x1, y1, r):
    return [(x0 + r, y0, 0), (x1 - r, y0, 0), (x1 - r, y0 + r, r), (x1, y0 + r, 0), (x1, y1 - r, 0),
            (x1 - r, y1 - r, r), (x1 - r, y1, 0), (x0 + r, y1, 0), (x0 + r, y1 - r, r), (x0, y1 - r, 0),
            (x0, y0 + r, 0), (x0 + r, y0 + r, r), (x0 + r, y0, 0)]


def xyr_text(pts, indent):
    items = ["(%d, %d, %d)" % p for p in pts]
    lines = []
    for k in range(0, len(items), 5):
        lines.append(" ".join(items[k:k + 5]))
    return ("\n" + " " * indent).join(lines)


def xy_text(pts):
    return " ".join("(%d, %d)" % p for p in pts)


class Counts:
    def __init__(self):
        self.traces = 0
        self.polyarc_traces = 0
        self.segments = 0
        self.vias = 0
        self.voids = 0
        self.tie_legs = 0
        self.conductive_areas = 0


def plane_voids(d, net, negative):
    """The voids of the plane of that net: every via and through pin of other nets."""
    grow = NEG_PEN // 2 if negative else 0
    voids = []
    for other in d.net_order:
        if other == net:
            continue
        for (x, y) in d.vias.get(other, ()):
            voids.append(("circle", x, y, VOID_VIA + grow, 0))
    for (vnet, kind, x, y, a, b) in d.th_voids:
        if vnet == net:
            continue
        voids.append((kind, x, y, a + grow, b + grow))
    return voids


def write_layout(d, sink, planes_file, counts):
    L = d.layers
    bw, bh = d.board
    w = sink.append
    w("\n".join(header("LAYOUT")))
    w("\n! Generated board, %d x %d mm, %d layers, %d placed parts\n" % (bw // 1000, bh // 1000, L,
                                                                       len(d.parts)))
    w("! Coordinates in micrometres\n\n.UNITS UM\n.DESIGN_NAME \"BENCH%d\"\n\n" % L)
    lyr = "LYR_%d"
    for p in d.parts:
        c = p.cell
        rx, ry = transform(p, 0, c.body[1] + 600)
        lines = [".%s \"%s\"" % (c.keyword, c.name), "..PID %d" % p.pid, "..XY (%d, %d)" % (p.x, p.y),
                 "..ROTATION %d" % p.rot,
                 "..PLACEMENT_LYR %s" % ("OPP_LYR" if p.bottom else "MNT_LYR"),
                 "..FACEMENT %s" % ("BOTTOM" if p.bottom else "TOP"),
                 "..TEXT \"%s\"" % p.ref, "...TEXT_TYPE REF_DES", "...DISPLAY_ATTR",
                 "....XY (%d, %d)" % (rx, ry),
                 "....TEXT_LYR %s" % ("SILKSCREEN_OPP_LYR" if p.bottom else "SILKSCREEN_MNT_LYR"),
                 "....HEIGHT 800", "....STROKE_WIDTH 100", "....ROTATION %d" % p.rot,
                 "....FONT \"VeriBest Gerber 0\"",
                 "..TEXT \"%s\"" % p.partno, "...TEXT_TYPE PARTNO", "...DISPLAY_ATTR",
                 "....XY (%d, %d)" % (p.x, p.y), "....TEXT_LYR ASSEMBLY", "....HEIGHT 500",
                 "....TEXT_OPTIONS INVISIBLE"]
        for i, pin in enumerate(c.pins):
            px, py = transform(p, pin.x, pin.y)
            lines += ["..PIN \"%s\"" % pin.name, "...PADSTACK \"%s\"" % pin.padstack,
                      "...XY (%d, %d)" % (px, py), "...ROTATION %d" % ((pin.rot + p.rot) % 360)]
            if p.nets[i]:
                lines.append("...NETNAME \"%s\"" % p.nets[i])
        lines.append("")
        w("\n".join(lines))
        w("\n")
    # One part that the assembly leaves out: not placed, not counted.
    cap = next(c for c in d.cells if c.name == "SMD_0603")
    w("\n".join([".PACKAGE_CELL \"%s\"" % cap.name, "..PID %d" % (1001 + len(d.parts)), "..XY (0, 0)",
                 "..ROTATION 0", "..PLACEMENT_LYR MNT_LYR", "..FACEMENT TOP", "..COMPONENT_OPTIONS NOT_PLACED",
                 "..TEXT \"C_DNP1\"", "...TEXT_TYPE REF_DES", "...DISPLAY_ATTR", "....XY (0, 1200)",
                 "....TEXT_LYR SILKSCREEN_MNT_LYR", "....HEIGHT 800",
                 "..PIN \"1\"", "...PADSTACK \"SMD0603\"", "...XY (-800, 0)", "...ROTATION 0",
                 "..PIN \"2\"", "...PADSTACK \"SMD0603\"", "...XY (800, 0)", "...ROTATION 0", ""]))
    w("\n")
    # Board, route border.
    r = BOARD_CORNER
    w(".BOARD_ORIGIN\n..XY (0, 0)\n.BOARD_OUTLINE\n..POLYARC_PATH\n...WIDTH 0\n...XYR %s\n" %
      xyr_text(rounded_rect_xyr(0, 0, bw, bh, r), 7))
    ri = ROUTE_INSET
    w(".ROUTE_OUTLINE\n..POLYARC_PATH\n...WIDTH 0\n...XYR %s\n" %
      xyr_text(rounded_rect_xyr(ri, ri, bw - ri, bh - ri, r - ri), 7))
    # Copper pours around the mounting holes on the top layer.
    holes = [p for p in d.parts if p.cell.name == "MTG_M3"]
    for k, p in enumerate(holes):
        s = 3800
        w(".CONDUCTIVE_AREA\n..NETNAME \"GND\"\n..ROUTE_LYR %s\n..CONDUCTIVE_AREA_OPTIONS NONE\n"
          "..HATCH_PATTERN SOLID\n" % (lyr % 1))
        if k % 2 == 0:
            w("..POLYARC_SHAPE\n...XYR %s\n...SHAPE_OPTIONS FILLED\n" %
              xyr_text(rounded_rect_xyr(p.x - s, p.y - s, p.x + s, p.y + s, 1000), 6))
        else:
            w("..POLYLINE_SHAPE\n...XY %s\n...SHAPE_OPTIONS FILLED\n" % xy_text(
                [(p.x - s, p.y - 1500), (p.x - 1500, p.y - s), (p.x + 1500, p.y - s), (p.x + s, p.y - 1500),
                 (p.x + s, p.y + 1500), (p.x + 1500, p.y + s), (p.x - 1500, p.y + s), (p.x - s, p.y + 1500),
                 (p.x - s, p.y - 1500)]))
        counts.conductive_areas += 1
    # Nets.
    for net in d.net_order:
        lines = [".NET \"%s\"" % net]
        for (layer, a, b) in d.fanouts.get(net, ()):
            lines += ["..TRACE", "...ROUTE_LYR %s" % (lyr % layer), "...POLYLINE_PATH",
                      "....WIDTH %d" % (300 if net in d.plane_nets else 125),
                      "....XY (%d, %d) (%d, %d)" % (a[0], a[1], b[0], b[1])]
            counts.traces += 1
            counts.segments += 1
        for (layer, kind, pts) in d.routes.get(net, ()):
            if kind == "arc":
                lines += ["..TRACE", "...ROUTE_LYR %s" % (lyr % layer), "...TRACE_OPTIONS NONE",
                          "...POLYARC_PATH", "....WIDTH 100", "....XYR %s" % xyr_text(pts, 7)]
                counts.polyarc_traces += 1
                counts.segments += 3
            else:
                lines += ["..TRACE", "...ROUTE_LYR %s" % (lyr % layer), "...POLYLINE_PATH", "....WIDTH 100",
                          "....XY %s" % xy_text(pts)]
                counts.segments += len(pts) - 1
            counts.traces += 1
        for (x, y) in d.vias.get(net, ()):
            lines += ["..VIA", "...PADSTACK \"%s\"" % VIA_PADSTACK, "...XY (%d, %d)" % (x, y),
                      "...LAYER_PAIR %s %s" % (lyr % 1, lyr % L)]
            counts.vias += 1
        if net == "GND":
            # The last block ends with conductive areas, so that the level of
            # the .GENERATED_DATA line ends the net block (a trace or via as
            # the last record would leave a stale level behind).
            for p in holes:
                lines += ["..CONDUCTIVE_AREA", "...ROUTE_LYR %s" % (lyr % L), "...CONDUCTIVE_AREA_OPTIONS NONE",
                          "...RECT_SHAPE", "....XY (%d, %d) (%d, %d)" % (p.x - 3700, p.y - 3700, p.x + 3700,
                                                                        p.y + 3700),
                          "....SHAPE_OPTIONS FILLED"]
                counts.conductive_areas += 1
        lines.append("")
        w("\n".join(lines))
    # Generated plane data.
    pi = PLANE_INSET
    outline = rounded_rect_xyr(pi, pi, bw - pi, bh - pi, r - pi)
    w(".GENERATED_DATA\n")
    plane_blocks = []
    for (layer, net, negative) in d.plane_assign:
        pen = NEG_PEN if negative else POS_PEN
        voids = plane_voids(d, net, negative)
        plane_blocks.append((layer, net, pen, voids))
        lines = ["..PLANE_LYR %s" % (lyr % layer), "..PLANE_NET \"%s\"" % net,
                 "...PLANE_TYPE %s" % ("NEGATIVE" if negative else "POSITIVE"),
                 "...POLYARC_PATH", "....WIDTH %d" % pen, "....XYR %s" % xyr_text(outline, 7)]
        for (kind, x, y, a, b) in voids:
            if kind == "circle":
                lines += ["...CIRCLE_PATH", "....WIDTH %d" % pen, "....XY (%d, %d)" % (x, y), "....RADIUS %d" % a]
            elif kind == "rect":
                lines += ["...RECT_PATH", "....WIDTH %d" % pen,
                          "....XY (%d, %d) (%d, %d)" % (x - a, y - b, x + a, y + b)]
            else:
                lines += ["...POLYARC_PATH", "....WIDTH %d" % pen,
                          "....XYR %s" % xyr_text(obround_xyr(x, y, a, b), 7)]
            counts.voids += 1
        if planes_file and negative:
            for (x, y) in d.vias.get(net, ()):
                lines += ["...APS_TIE_LEG", "....WIDTH 150",
                          "....XY (%d, %d) (%d, %d)" % (x - VIA_PAD_R - 200, y, x + VIA_PAD_R + 200, y)]
                counts.tie_legs += 1
        lines.append("")
        w("\n".join(lines))
    return plane_blocks, outline


def write_planes(d, plane_blocks, outline, out):
    """Planes.hkp in the block text form: one block per plane with its cut-outs."""
    w = out.append
    w("$begin 'Planes'\n")
    for k, (layer, net, pen, voids) in enumerate(plane_blocks):
        w("\t$begin 'Plane_%d'\n\t\tNet('%s')\n\t\tLayer('%d')\n\t\twidth(%d)\n" % (k + 1, net, layer, pen))
        w(arcs_as_items(outline, "\t\t"))
        w("\t\t$begin 'Cutouts'\n")
        for j, (kind, x, y, a, b) in enumerate(voids):
            w("\t\t\t$begin 'Cutout_%d'\n" % (j + 1))
            if kind == "circle":
                w("\t\t\t\tcircle(%d, %d, %d)\n" % (x, y, a))
            elif kind == "rect":
                w(arcs_as_items([(x - a, y - b, 0), (x + a, y - b, 0), (x + a, y + b, 0), (x - a, y + b, 0),
                                 (x - a, y - b, 0)], "\t\t\t\t"))
            else:
                w(arcs_as_items(obround_xyr(x, y, a, b), "\t\t\t\t"))
            w("\t\t\t$end 'Cutout_%d'\n" % (j + 1))
        w("\t\t$end 'Cutouts'\n")
        w("\t$end 'Plane_%d'\n" % (k + 1))
    w("$end 'Planes'\n")


def arcs_as_items(triples, indent):
    """XYR triples (start, centre with signed radius, end, ...) as Seg and Arc items."""
    lines = []
    for (x, y, r) in triples:
        if r:
            lines.append("%sArc(%d, %d, %d)" % (indent, x, y, r))
        else:
            lines.append("%sSeg(%d, %d)" % (indent, x, y))
    return "\n".join(lines) + "\n"


def write_netclass(d):
    out = header("NET_CLASS_RULES")
    out += ["! Net classes and clearance rules", "", ".UNITS MM", "", ".NET_CLASS_SCHEME \"(Master)\"",
            "..CLEARANCE_RULE_SET \"(Default Rule)\""]
    planes = set(d.plane_layers)
    for i in range(1, d.layers + 1):
        out += ["...SUBRULE \"Layer %d\"" % i, "....LAYER_NUM %d" % i]
        if i in planes:
            out += ["....TRACE_TO_TRACE 0.2", "....PLANE_TO_PAD 0.25", "....PLANE_TO_VIA 0.2",
                    "....PLANE_TO_PLANE 0.3"]
        else:
            out += ["....TRACE_TO_TRACE 0.1", "....TRACE_TO_PAD 0.1", "....TRACE_TO_VIA 0.1",
                    "....VIA_TO_VIA 0.15", "....VIA_TO_PAD 0.1", "....PAD_TO_PAD 0.1",
                    "....PLANE_TO_TRACE 0.2", "....PLANE_TO_PAD 0.25", "....PLANE_TO_VIA 0.2",
                    "....PLANE_TO_PLANE 0.3", "....MASK_TO_TRACE 0.05", "....MASK_TO_PAD 0.05",
                    "....MASK_TO_VIA 0.05", "....MASK_TO_PLANE 0.05"]
    out += ["..CLEARANCE_RULE_SET \"Power To All\"", "...CLASS_PAIR \"Power\" \"(All)\"",
            "...SUBRULE \"All Layers\"", "....LAYER_NUM 1", "....TRACE_TO_TRACE 0.3",
            "..NET_CLASS \"Power\""]
    out += ["...NET \"%s\"" % n for n in d.plane_nets]
    out += ["..NET_CLASS \"(Default)\""]
    out += ["...NET \"%s\"" % n for n in d.net_order if n not in d.plane_nets][:50]
    return "\n".join(out) + "\n"


PART_INFO = {
    "CAP-0402-100N-X7R-16V": ("C", "Capacitance", "100n", "CAP CER 100nF 16V X7R 0402"),
    "CAP-0603-10U-X5R-10V": ("C", "Capacitance", "10u", "CAP CER 10uF 10V X5R 0603"),
    "RES-0402-10K-1%": ("R", "Resistance", "10k", "RES 10k 1% 0402"),
    "RES-0402-33R-1%": ("R", "Resistance", "33", "RES 33R 1% 0402"),
    "RES-0603-0R": ("R", "Resistance", "0", "RES 0R 0603 jumper"),
    "IND-0603-2U2": ("L", "Inductance", "2.2u", "IND 2.2uH 0603"),
    "LDO-3V3-SOIC8": ("U", None, None, "LDO 3.3V SOIC-8"),
    "BUF-SOIC16": ("U", None, None, "Octal buffer SOIC-16"),
    "PHY-QFN32-5X5": ("U", None, None, "Ethernet PHY QFN-32"),
    "MCU-BGA100": ("U", None, None, "Microcontroller BGA-100"),
    "FPGA-BGA400": ("U", None, None, "FPGA BGA-400"),
    "HDR-2X10-P254": ("J", None, None, "Header 2x10 2.54 mm"),
    "HDR-1X2-P254-SLOT": ("J", None, None, "Power header 1x2, slotted lead"),
    "MTG-M3-PLATED": ("H", None, None, "Mounting hole M3 plated"),
    "LED-0805-GRN": ("D", None, None, "LED green 0805"),
    "BJT-SOT23-NPN": ("Q", None, None, "NPN transistor SOT-23"),
}


def write_pdb(d, values):
    out = header("PARTS_DATABASE")
    out += ["! Parts of the generated board", ""]
    cells = {}
    for p in d.parts:
        cells.setdefault(p.partno, p.cell.name)
    for partno in sorted(cells):
        prefix, kind, value, name = PART_INFO[partno]
        out += [".PART_NUMBER \"%s\"" % partno, "..Number \"%s\"" % partno, "..Name \"%s\"" % name,
                "..Label \"%s\"" % (kind or "Part"), "..RefPrefix \"%s\"" % prefix,
                "..TopCell \"%s\"" % cells[partno], "..BottomCell \"%s\"" % cells[partno]]
        if kind:
            out.append("..Prop \"Type\"=\"%s\"" % kind)
            if values:
                out.append("..Prop \"Value\"=\"%s\"" % value)
                if prefix == "C":
                    out += ["..Prop \"Parasitic_Resistance\"=\"0.01\"", "..Prop \"ParaSitic_Inductance\"=\"0.5n\""]
                elif prefix == "R":
                    out.append("..Prop \"Parasitic_Capacitance\"=\"0.05p\"")
                else:
                    out.append("..Prop \"Parasitic_Resistance\"=\"0.1\"")
            out.append("..Prop \"Tolerance\"=\"10%\"")
        out.append("")
    return "\n".join(out).rstrip("\n") + "\n"


class CountingSink:
    """A list-like sink that only counts bytes (for the pilot design)."""

    def __init__(self):
        self.size = 0

    def append(self, text):
        self.size += len(text)


class FileSink:
    def __init__(self, f):
        self.f = f
        self.buf = []
        self.n = 0
        self.size = 0

    def append(self, text):
        self.buf.append(text)
        self.n += len(text)
        if self.n > (1 << 22):
            self.flush()

    def flush(self):
        data = "".join(self.buf)
        self.f.write(data)
        self.size += len(data)
        self.buf = []
        self.n = 0


# ---------------------------------------------------------------------------

def check_design(d):
    """Checks of the geometry; returns a list of faults (empty when all hold)."""
    faults = []
    bw, bh = d.board
    # Parts inside the board, courtyards apart.
    grid = {}
    boxes = []
    for p in d.parts:
        x0, y0, x1, y1 = rotated_bbox(p.cell, p.rot, p.bottom)
        box = (p.x + x0, p.y + y0, p.x + x1, p.y + y1)
        if box[0] < ROUTE_INSET or box[1] < ROUTE_INSET or box[2] > bw - ROUTE_INSET or box[3] > bh - ROUTE_INSET:
            faults.append("part %s outside the board" % p.ref)
        boxes.append((p.ref, box))
    cell = 20000
    for k, (ref, b) in enumerate(boxes):
        for gx in range(b[0] // cell, b[2] // cell + 1):
            for gy in range(b[1] // cell, b[3] // cell + 1):
                for j in grid.get((gx, gy), ()):
                    o = boxes[j][1]
                    if b[0] < o[2] and o[0] < b[2] and b[1] < o[3] and o[1] < b[3]:
                        faults.append("parts %s and %s overlap" % (ref, boxes[j][0]))
                grid.setdefault((gx, gy), []).append(k)
    # Traces end on pins or vias of their own net.
    ends = {}
    for p in d.parts:
        for i, pin in enumerate(p.cell.pins):
            if p.nets[i]:
                ends.setdefault(p.nets[i], set()).add(transform(p, pin.x, pin.y))
    for net, vs in d.vias.items():
        ends.setdefault(net, set()).update(vs)
    for net, fl in d.fanouts.items():
        for (_, a, b) in fl:
            if a not in ends.get(net, ()) or b not in ends.get(net, ()):
                faults.append("fan-out trace of %s at %s does not end on its net" % (net, a))
    for net, rl in d.routes.items():
        for (_, _, pts) in rl:
            a, b = tuple(pts[0][:2]), tuple(pts[-1][:2])
            if a not in ends.get(net, ()) or b not in ends.get(net, ()):
                faults.append("trace of %s from %s does not end on its net" % (net, a))
    # Voids inside the plane outline, and apart from each other.
    lo, hx, hy, rc = PLANE_INSET, bw - PLANE_INSET, bh - PLANE_INSET, BOARD_CORNER - PLANE_INSET
    for (layer, net, negative) in d.plane_assign:
        voids = plane_voids(d, net, negative)
        shapes = []
        for (kind, x, y, a, b) in voids:
            if kind == "circle":
                b = a
            box = (x - a, y - b, x + a, y + b)
            if kind == "circle":
                inside = in_rounded_rect(x, y, lo + a, lo + a, hx - a, hy - a, max(0, rc - a), rc)
            else:
                inside = all(in_rounded_rect(px, py, lo, lo, hx, hy, rc, rc)
                             for px in (box[0], box[2]) for py in (box[1], box[3]))
            if not inside:
                faults.append("void at (%d, %d) on layer %d outside the plane" % (x, y, layer))
            shapes.append((kind, x, y, a, b, box))
        grid = {}
        cell = 5000
        for k, s in enumerate(shapes):
            box = s[5]
            for gx in range(box[0] // cell, box[2] // cell + 1):
                for gy in range(box[1] // cell, box[3] // cell + 1):
                    for j in grid.get((gx, gy), ()):
                        if voids_touch(s, shapes[j]):
                            faults.append("voids at (%d, %d) and (%d, %d) on layer %d overlap"
                                          % (s[1], s[2], shapes[j][1], shapes[j][2], layer))
                    grid.setdefault((gx, gy), []).append(k)
    return faults


def in_rounded_rect(x, y, x0, y0, x1, y1, r, rc):
    """Whether (x, y) lies strictly inside the rectangle whose corner arcs of
    radius r are centred where those of the plane outline (radius rc) are."""
    if not (x0 < x < x1 and y0 < y < y1):
        return False
    if r <= 0:
        return True
    d = rc
    for cx, cy, sx, sy in ((x0 - (rc - r) + d, y0 - (rc - r) + d, -1, -1),
                           (x1 + (rc - r) - d, y0 - (rc - r) + d, 1, -1),
                           (x1 + (rc - r) - d, y1 + (rc - r) - d, 1, 1),
                           (x0 - (rc - r) + d, y1 + (rc - r) - d, -1, 1)):
        if (x - cx) * sx > 0 and (y - cy) * sy > 0 and math.hypot(x - cx, y - cy) >= r:
            return False
    return True


def voids_touch(s, t):
    if s[0] == "circle" and t[0] == "circle":
        return math.hypot(s[1] - t[1], s[2] - t[2]) < s[3] + t[3]
    if s[0] == "circle" or t[0] == "circle":
        c, r = (s, t) if s[0] == "circle" else (t, s)
        box = r[5]
        nx = min(max(c[1], box[0]), box[2])
        ny = min(max(c[2], box[1]), box[3])
        return math.hypot(c[1] - nx, c[2] - ny) < c[3]
    a, b = s[5], t[5]
    return a[0] < b[2] and b[0] < a[2] and a[1] < b[3] and b[1] < a[3]


def layout_size(seed, nparts, layers, planes_file):
    sink = CountingSink()
    write_layout(build_design(random.Random(seed), nparts, layers), sink, planes_file, Counts())
    return sink.size


def parts_for_size(seed, size_mb, layers, planes_file):
    """Placed parts for a Layout.hkp of about size_mb.

    A pilot of 400 parts gives a first estimate; then the design itself (or,
    above 20000 parts, its first 20000 parts) is sized without being written,
    and the count scaled, until the size is within 1 %. Small designs grow in
    steps (one BGA more is many kilobytes), so there the count is bisected and
    the closest size that was seen wins.
    """
    target = size_mb * 1e6
    pilot = 400
    n = max(8, int(round(target * pilot / layout_size(seed * 7919 + 17, pilot, layers, planes_file))))
    seen = {}
    for _ in range(4):
        m = min(n, 20000)
        size = layout_size(seed, m, layers, planes_file)
        if m == n:
            seen[n] = size
        if m == n and abs(size - target) <= 0.01 * target:
            return n
        n = max(8, int(round(target * m / size)))
    if n <= 3000:
        below = max([k for k, v in seen.items() if v < target] or [8])
        above = min([k for k, v in seen.items() if v >= target] or [2 * n + 8])
        while above - below > 1:
            mid = (below + above) // 2
            seen[mid] = layout_size(seed, mid, layers, planes_file)
            if seen[mid] < target:
                below = mid
            else:
                above = mid
    if not seen:
        return n
    return min(seen, key=lambda k: (abs(seen[k] - target), k))


def main(argv=None):
    ap = argparse.ArgumentParser(description="Write a synthetic Expedition job of about N MB.")
    ap.add_argument("outdir")
    ap.add_argument("--size-mb", type=float, required=True, help="size of Layout.hkp in MB (1e6 bytes)")
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--layers", type=int, default=None, help="conductive layers, 6 to 20")
    ap.add_argument("--planes-file", action="store_true", help="also write Planes.hkp")
    ap.add_argument("--no-netclass", action="store_true", help="leave NetClass.hkp out")
    ap.add_argument("--no-pdb-values", action="store_true", help="no Value properties in PDB.hkp")
    ap.add_argument("--summary", action="store_true", help="print the summary to standard output")
    ap.add_argument("--check", action="store_true",
                    help="check the geometry (parts apart, traces on their nets, voids apart) and fail on a fault")
    args = ap.parse_args(argv)
    if args.size_mb <= 0 or args.size_mb > 1200:
        ap.error("--size-mb must be above 0 and at most 1200")
    layers = args.layers
    if layers is None:
        # Bigger boards get more layers: 6 up to 1 MB, then more.
        layers = 6 if args.size_mb <= 1 else (8 if args.size_mb <= 10 else (10 if args.size_mb <= 50 else 12))
    if layers < 6 or layers > 20:
        ap.error("--layers must be between 6 and 20")

    nparts = parts_for_size(args.seed, args.size_mb, layers, args.planes_file)
    rng = random.Random(args.seed)
    d = build_design(rng, nparts, layers)
    if args.check:
        faults = check_design(d)
        if faults:
            for f in faults[:20]:
                sys.stderr.write("generate_job: %s\n" % f)
            sys.stderr.write("generate_job: %d geometry faults\n" % len(faults))
            return 1

    os.makedirs(args.outdir, exist_ok=True)

    def put(name, text):
        with open(os.path.join(args.outdir, name), "w", newline="\n", encoding="ascii") as f:
            f.write(text)

    put("JobPrefs.hkp", write_jobprefs(d))
    put("Padstack.hkp", write_padstack(d))
    put("Cell.hkp", write_cells(d))
    counts = Counts()
    with open(os.path.join(args.outdir, "Layout.hkp"), "w", newline="\n", encoding="ascii") as f:
        sink = FileSink(f)
        plane_blocks, outline = write_layout(d, sink, args.planes_file, counts)
        sink.flush()
        layout_bytes = sink.size
    planes_path = os.path.join(args.outdir, "Planes.hkp")
    if args.planes_file:
        with open(planes_path, "w", newline="\n", encoding="ascii") as f:
            sink = FileSink(f)
            write_planes(d, plane_blocks, outline, sink)
            sink.flush()
    elif os.path.exists(planes_path):
        os.remove(planes_path)
    netclass_path = os.path.join(args.outdir, "NetClass.hkp")
    if args.no_netclass:
        if os.path.exists(netclass_path):
            os.remove(netclass_path)
    else:
        put("NetClass.hkp", write_netclass(d))
    put("PDB.hkp", write_pdb(d, not args.no_pdb_values))

    placed = len(d.parts)
    pins = sum(len(p.cell.pins) for p in d.parts)
    nets = len(d.net_order)
    summary = {
        "seed": args.seed,
        "size_mb": args.size_mb,
        "layers": layers,
        "plane_layers": len(d.plane_layers),
        "planes_file": bool(args.planes_file),
        "board_mm": [d.board[0] / 1000.0, d.board[1] / 1000.0],
        "layout_bytes": layout_bytes,
        "placed_parts": placed,
        "not_placed_parts": 1,
        "pins": pins,
        "nets": nets,
        "traces": counts.traces,
        "polyarc_traces": counts.polyarc_traces,
        "trace_segments": counts.segments,
        "vias": counts.vias,
        "plane_voids": counts.voids,
        "tie_legs": counts.tie_legs,
        "conductive_areas": counts.conductive_areas,
        # What the translator's output should hold:
        "expected_LayoutCompInst": placed,
        "expected_LayoutNet": nets,
        "expected_Via": counts.vias,
        "expected_trace_Path": counts.traces + counts.tie_legs,
    }
    with open(os.path.join(args.outdir, "generator_summary.json"), "w", newline="\n") as f:
        json.dump(summary, f, indent=1, sort_keys=True)
        f.write("\n")
    if args.summary:
        json.dump(summary, sys.stdout, indent=1, sort_keys=True)
        sys.stdout.write("\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
