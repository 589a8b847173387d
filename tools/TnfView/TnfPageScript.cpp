// TnfPageScript.cpp - style and script of the page, plain CSS and JavaScript
// without any file or address outside the page.
//
// The script reads the tables that the page writer puts in front of it: TNF
// with the layer, net and component names and the pins as [x, y, reach,
// component, pin name, net, first layer, last layer]. It turns layers on and off, zooms with the
// wheel about the pointer, pans by dragging, and names the net (and the pin)
// under the pointer; a click keeps that text. window.tnfView lets a test
// turn board coordinates into page coordinates.
#include "tools/TnfView/TnfPageScript.h"

namespace tnfview
{
const char* const k_PageStyle = R"CSS(
html, body { margin: 0; height: 100%; background: #1c1c21; color: #e4e4e4;
  font: 13px/1.4 system-ui, sans-serif; }
body { display: flex; flex-direction: column; }
header { padding: 6px 12px; border-bottom: 1px solid #333; }
header h1 { font-size: 16px; margin: 0; }
header p { margin: 2px 0 0; color: #b8b8b8; }
main { flex: 1; display: flex; min-height: 0; }
#legend { width: 190px; padding: 8px 12px; border-right: 1px solid #333; overflow: auto; }
#legend h2 { font-size: 13px; margin: 0 0 6px; }
#legend label { display: block; white-space: nowrap; cursor: pointer; }
#legend small { color: #999; }
.swatch { display: inline-block; width: 12px; height: 12px; margin: 0 6px 0 4px;
  vertical-align: -1px; border: 1px solid #555; }
.swatch.holes { background: #050505; } .swatch.edge { background: #f2f2f2; }
#view { flex: 1; position: relative; overflow: hidden; }
#board { position: absolute; width: 100%; height: 100%; cursor: grab; background: #1c1c21; }
#board.dragging { cursor: grabbing; }
#substrate { fill: #0e2a1b; fill-rule: evenodd; }
#edge { fill: none; stroke: #f2f2f2; stroke-width: 1px; vector-effect: non-scaling-stroke; }
.p { fill: currentColor; fill-rule: evenodd; }
.f { fill: currentColor; }
.t, .d { fill: none; stroke: currentColor; stroke-linecap: round; stroke-linejoin: round; }
#holes .t, #holes .d { stroke: #050505; }
#info { padding: 4px 12px; border-top: 1px solid #333; min-height: 18px; font-family: monospace; }
)CSS";

const char* const k_PageScript = R"JS(
(function () {
  'use strict';
  var svg = document.getElementById('board');
  var info = document.getElementById('info');
  var box = svg.getAttribute('viewBox').split(' ').map(Number);
  var kept = '';

  function show() { svg.setAttribute('viewBox', box.join(' ')); }
  // Page coordinates of the window to board coordinates (y up) and back.
  function toBoard(cx, cy) {
    var p = new DOMPoint(cx, cy).matrixTransform(svg.getScreenCTM().inverse());
    return [p.x, -p.y];
  }
  function toPage(x, y) {
    var p = new DOMPoint(x, -y).matrixTransform(svg.getScreenCTM());
    return [p.x, p.y];
  }

  document.querySelectorAll('#legend input').forEach(function (box) {
    box.addEventListener('change', function () {
      var id = box.dataset.layer !== undefined ? 'layer-' + box.dataset.layer : box.dataset.group;
      document.getElementById(id).style.display = box.checked ? '' : 'none';
    });
  });

  svg.addEventListener('wheel', function (e) {
    e.preventDefault();
    var f = Math.exp(Math.max(-300, Math.min(300, e.deltaY)) * 0.002);
    var p = new DOMPoint(e.clientX, e.clientY).matrixTransform(svg.getScreenCTM().inverse());
    box = [p.x - (p.x - box[0]) * f, p.y - (p.y - box[1]) * f, box[2] * f, box[3] * f];
    show();
  }, { passive: false });

  var drag = null;
  svg.addEventListener('pointerdown', function (e) {
    drag = { x: e.clientX, y: e.clientY, box: box.slice(), scale: svg.getScreenCTM().a, moved: false };
    svg.setPointerCapture(e.pointerId);
  });
  svg.addEventListener('pointermove', function (e) {
    if (drag) {
      var dx = e.clientX - drag.x, dy = e.clientY - drag.y;
      if (Math.abs(dx) + Math.abs(dy) > 3) drag.moved = true;
      if (drag.moved) {
        svg.classList.add('dragging');
        box = [drag.box[0] - dx / drag.scale, drag.box[1] - dy / drag.scale, box[2], box[3]];
        show();
      }
      return;
    }
    info.textContent = describe(e) || kept || '\u00a0';
  });
  svg.addEventListener('pointerup', function (e) {
    if (drag && !drag.moved) kept = describe(e);
    drag = null;
    svg.classList.remove('dragging');
  });

  function visible(layer) {
    var g = document.getElementById('layer-' + layer);
    return g && g.style.display !== 'none';
  }
  function anyVisible(first, last) {
    for (var layer = first; layer <= last; layer++) if (visible(layer)) return true;
    return false;
  }
  // The pin nearest the point within its pads' reach, on a layer shown.
  function pinAt(x, y) {
    var best = null, bestD = Infinity;
    for (var i = 0; i < TNF.pins.length; i++) {
      var p = TNF.pins[i];
      var d = Math.hypot(p[0] - x, p[1] - y);
      if (d <= p[2] && d < bestD && anyVisible(p[6], p[7])) { best = p; bestD = d; }
    }
    return best;
  }
  function describe(e) {
    var at = toBoard(e.clientX, e.clientY);
    var text = 'x ' + at[0].toFixed(3) + '  y ' + at[1].toFixed(3) + ' mm';
    var t = e.target, net = t && t.dataset ? t.dataset.n : undefined;
    if (net !== undefined) {
      var g = t.parentNode;
      text += '  net ' + TNF.nets[+net];
      if (g && g.id && g.id.indexOf('layer-') === 0) text += '  on ' + TNF.layers[+g.id.slice(6)];
    }
    var pin = pinAt(at[0], at[1]);
    if (pin && (net !== undefined || t === svg || t.id === 'substrate')) {
      text += '  pin ' + TNF.components[pin[3]] + '.' + pin[4];
      if (pin[5] >= 0 && net === undefined) text += '  net ' + TNF.nets[pin[5]];
    }
    return text;
  }

  window.tnfView = { toPage: toPage, toBoard: toBoard, visible: visible, ready: true };
})();
)JS";

} // namespace tnfview
