#!/usr/bin/env python3
"""TnfView pages in a real browser: Debian's chromium, headless, driven over
its DevTools pipe with the Python standard library only.

Each page is loaded from a file: URL, drawn, and captured; the test reads the
colour of the captured pixels at known board coordinates (on a trace, in a
void, on a plane, outside the board), turns layers off through their legend
boxes, and fails on any script error or console error.

Exit status 0 when all checks pass, 1 on a failure, 77 when chromium cannot
run here (CTest shows the test as skipped, with the reason in its output).

  browser_test.py --tnfview EXE --translator EXE --source DIR [--screenshot PNG]
  browser_test.py --measure PAGE.html      time to load and draw one page
"""
import argparse, base64, json, os, select, shutil, struct, subprocess, sys, tempfile, time, zlib

SKIP = 77
WIDTH, HEIGHT = 1200, 800

# The page's colours, as the legend shows them.
TOP, BOTTOM = (0xd8, 0x32, 0x2a), (0x2f, 0x64, 0xe0)
INNER1 = (0xe0, 0xa8, 0x2a)
SUBSTRATE, BACKGROUND = (0x0e, 0x2a, 0x1b), (0x1c, 0x1c, 0x21)


def find_chromium():
    for name in (os.environ.get("TNF_CHROMIUM"), "chromium", "chromium-browser", "google-chrome"):
        if name and shutil.which(name):
            return shutil.which(name)
    return None


class Browser:
    """A headless chromium and one page, over --remote-debugging-pipe."""

    def __init__(self, exe):
        self.profile = tempfile.mkdtemp(prefix="tnfview-chromium-")
        to_chrome_r, self.to_chrome = os.pipe()
        self.from_chrome, from_chrome_w = os.pipe()

        def child_fds():
            # Chromium reads commands on descriptor 3 and answers on 4.
            a, b = os.dup(to_chrome_r), os.dup(from_chrome_w)
            os.dup2(a, 3)
            os.dup2(b, 4)

        args = [exe, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                "--disable-background-networking", "--disable-component-update", "--disable-sync",
                "--hide-scrollbars", "--user-data-dir=" + self.profile, "--remote-debugging-pipe",
                "--window-size=%d,%d" % (WIDTH, HEIGHT), "about:blank"]
        self.proc = subprocess.Popen(args, preexec_fn=child_fds, pass_fds=(3, 4),
                                     stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        os.close(to_chrome_r)
        os.close(from_chrome_w)
        self.buffer = b""
        self.next_id = 0
        self.events = []
        self.session = None
        targets = self.call("Target.getTargets")["targetInfos"]
        page = next(t for t in targets if t["type"] == "page")
        self.session = self.call("Target.attachToTarget", targetId=page["targetId"], flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(domain + ".enable")
        self.call("Emulation.setDeviceMetricsOverride", width=WIDTH, height=HEIGHT, deviceScaleFactor=1,
                  mobile=False)

    def read_message(self, timeout=180):
        while b"\0" not in self.buffer:
            if not select.select([self.from_chrome], [], [], timeout)[0]:
                raise RuntimeError("chromium said nothing for %d s" % timeout)
            chunk = os.read(self.from_chrome, 1 << 20)
            if not chunk:
                raise RuntimeError("chromium closed its pipe: " + self.proc.stderr.read().decode(errors="replace")[-2000:])
            self.buffer += chunk
        message, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, **params):
        self.next_id += 1
        message = {"id": self.next_id, "method": method, "params": params}
        if self.session and not method.startswith("Target."):
            message["sessionId"] = self.session
        os.write(self.to_chrome, json.dumps(message).encode() + b"\0")
        while True:
            reply = self.read_message()
            if reply.get("id") == self.next_id:
                if "error" in reply:
                    raise RuntimeError("%s: %s" % (method, reply["error"]))
                return reply.get("result", {})
            self.events.append(reply)

    def wait_event(self, method, timeout):
        end = time.time() + timeout
        while time.time() < end:
            for i, event in enumerate(self.events):
                if event.get("method") == method:
                    return self.events.pop(i)
            self.events.append(self.read_message())
        raise RuntimeError("no %s within %d s" % (method, timeout))

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError("script error: %s" % result["exceptionDetails"])
        return result["result"].get("value")

    def load(self, path, timeout=120):
        self.events = [e for e in self.events if e.get("method") != "Page.loadEventFired"]
        self.call("Page.navigate", url="file://" + os.path.abspath(path))
        self.wait_event("Page.loadEventFired", timeout)
        # Two animation frames: the page has been laid out and painted.
        self.evaluate("new Promise(r => requestAnimationFrame(() => requestAnimationFrame(r)))")

    def errors(self):
        found = []
        for e in self.events:
            m, p = e.get("method"), e.get("params", {})
            if m == "Runtime.exceptionThrown":
                found.append(p["exceptionDetails"].get("text", "") + " " +
                             str(p["exceptionDetails"].get("exception", {}).get("description", "")))
            elif m == "Runtime.consoleAPICalled" and p.get("type") in ("error", "assert"):
                found.append(" ".join(str(a.get("value", a.get("description", ""))) for a in p.get("args", [])))
            elif m == "Log.entryAdded" and p["entry"].get("level") == "error":
                found.append(p["entry"].get("text", ""))
        return found

    def screenshot(self, clip=None):
        params = {"format": "png"}
        if clip:
            params["clip"] = clip
        return base64.b64decode(self.call("Page.captureScreenshot", **params)["data"])

    def close(self):
        try:
            self.call("Browser.close")
        except Exception:
            pass
        try:
            self.proc.wait(10)
        except subprocess.TimeoutExpired:
            self.proc.kill()
            self.proc.wait()
        os.close(self.to_chrome)
        os.close(self.from_chrome)
        shutil.rmtree(self.profile, ignore_errors=True)


def decode_png(png):
    """Width, height and rows of RGB(A) bytes of an 8-bit PNG."""
    assert png[:8] == b"\x89PNG\r\n\x1a\n"
    pos, idat = 8, b""
    while pos < len(png):
        length, kind = struct.unpack(">I4s", png[pos:pos + 8])
        body = png[pos + 8:pos + 8 + length]
        if kind == b"IHDR":
            width, height, depth, colour = struct.unpack(">IIBB", body[:10])
            assert depth == 8 and colour in (2, 6) and body[12] == 0, "unexpected PNG form"
        elif kind == b"IDAT":
            idat += body
        pos += 12 + length
    bpp = 4 if colour == 6 else 3
    raw = zlib.decompress(idat)
    stride = width * bpp
    rows, prev = [], bytearray(stride)
    for y in range(height):
        f = raw[y * (stride + 1)]
        line = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
        for i in range(stride):
            a = line[i - bpp] if i >= bpp else 0
            b = prev[i]
            c = prev[i - bpp] if i >= bpp else 0
            if f == 1:
                line[i] = (line[i] + a) & 255
            elif f == 2:
                line[i] = (line[i] + b) & 255
            elif f == 3:
                line[i] = (line[i] + (a + b) // 2) & 255
            elif f == 4:
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                line[i] = (line[i] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 255
        rows.append(bytes(line))
        prev = line
    return width, height, bpp, rows


class Page:
    def __init__(self, browser, name):
        self.browser, self.name, self.failures = browser, name, []

    def pixel(self, x, y):
        """The colour drawn at board point (x, y), mm."""
        px, py = self.browser.evaluate("tnfView.toPage(%r, %r)" % (x, y))
        assert 0 <= px < WIDTH and 0 <= py < HEIGHT, "(%g, %g) is off the page" % (x, y)
        clip = {"x": int(px), "y": int(py), "width": 1, "height": 1, "scale": 1}
        width, height, bpp, rows = decode_png(self.browser.screenshot(clip))
        return tuple(rows[0][0:3])

    def expect(self, what, x, y, colour, equal=True):
        got = self.pixel(x, y)
        close = all(abs(g - c) <= 8 for g, c in zip(got, colour))
        if close != equal:
            self.failures.append("%s: %s at (%g, %g) is #%02x%02x%02x, %s #%02x%02x%02x" % (
                self.name, what, x, y, *got, "expected" if equal else "must not be", *colour))

    def hover(self, what, x, y, words, absent=()):
        """Moves the mouse to board point (x, y); the line below the board
        must name all the words and none of the absent ones."""
        px, py = self.browser.evaluate("tnfView.toPage(%r, %r)" % (x, y))
        self.browser.call("Input.dispatchMouseEvent", type="mouseMoved", x=px, y=py)
        text = self.browser.evaluate("document.getElementById('info').textContent")
        if not all(w in text for w in words) or any(w in text for w in absent):
            self.failures.append("%s: hovering %s at (%g, %g) shows %r, not %s without %s" % (
                self.name, what, x, y, text, words, list(absent)))

    def show_layer(self, index, on):
        self.browser.evaluate("""(() => { const b = document.querySelector('#legend input[data-layer="%d"]');
            if (b.checked !== %s) b.click(); })()""" % (index, "true" if on else "false"))
        self.browser.evaluate("new Promise(r => requestAnimationFrame(() => requestAnimationFrame(r)))")

    def only_layer(self, index, count):
        for i in range(count):
            self.show_layer(i, i == index)


# A board made up for the test, with every position known by construction.
SMALL = r"""$begin 'TarvexNeutralFile'
	Version('4', '0')
	Date='Mon Jan  5 10:00:00 2026'
	$begin 'PadShapes'
		RD1(Circle(1))
		SQ1(Rectangle(1, 1))
	$end 'PadShapes'
	$begin 'PadStacks'
		$begin 'VIA'
			Hole(0.3)
			Top('RD1', 0, 0, 0, Thermal(), NonConnect())
			Bottom('RD1', 0, 0, 0, Thermal(), NonConnect())
		$end 'VIA'
		$begin 'SMD'
			Top('SQ1', 0, 0, 0, Thermal(), NonConnect())
		$end 'SMD'
	$end 'PadStacks'
	$begin 'Footprints'
		$begin 'FP'
			$begin 'FpPins'
				$begin 'FpPindef'
					FpPin('1', 1, 0, 'SMD', 0)
				$end 'FpPindef'
			$end 'FpPins'
		$end 'FP'
	$end 'Footprints'
	$begin 'Components'
		$begin 'Component0'
			CompDef('', 'FP', '', 'U', 1)
			Terminal('1', '1', 'A', false)
		$end 'Component0'
	$end 'Components'
	$begin 'LayoutData'
		$begin 'LayoutCell'
			$begin 'Netlist'
				$begin 'Compinst'
					U1('Component0')
				$end 'Compinst'
				$begin 'Net'
					N1('Signal')
					NetPin='U1.0'
				$end 'Net'
			$end 'Netlist'
			$begin 'Layout'
				$begin 'Layers'
					StackupLayer('TOP', 'Signal', 'Top', 0.03, 'copper')
					StackupLayer('D1', 'Dielectric', 'neither', 1, 'FR4')
					StackupLayer('MID', 'MetalizedSignal', 'neither', 0.03, 'copper')
					StackupLayer('D2', 'Dielectric', 'neither', 1, 'FR4')
					StackupLayer('BOT', 'Signal', 'Bottom', 0.03, 'copper')
				$end 'Layers'
				$begin 'LayoutComponents'
					$begin 'LayoutComp'
						LayoutCompInst('BOT', 'FP', 'U1', 5, 5, 90, true)
					$end 'LayoutComp'
				$end 'LayoutComponents'
				$begin 'LayoutNets'
					$begin 'LayoutNet'
						Name='N1'
						Graphics('TOP', Path(1, vertex(1, 1, 0.6, 0.6, 'Round', 'Radiallymitered', 0.6), vertex(8, 1, 0.6, 0.6, 'Round', 'Radiallymitered', 0.6)))
						Graphics('TOP', Path(2, vertex(1, 9, 0.4, 0.4, 'Round', 'Radiallymitered', 0.4), Arc(-1), vertex(5, 9, 0.4, 0.4, 'Round', 'Radiallymitered', 0.4)))
						Via(3, 'TOP', 'BOT', 8, 3, 'VIA', 0)
						$begin 'PolygonWithVoids'
							Layer='BOT'
							Polygon(4, 0, vertex(0, 0), vertex(10, 0), vertex(10, 10), vertex(0, 10))
							$begin 'voids'
								Circle(5, 0, 5, 5, 3.6)
								Polygon(6, 0, vertex(8, 7), vertex(9, 7), vertex(9, 9), vertex(8, 9))
							$end 'voids'
						$end 'PolygonWithVoids'
					$end 'LayoutNet'
				$end 'LayoutNets'
			$end 'Layout'
		$end 'LayoutCell'
		$begin 'Design'
			$begin 'TopLayout'
				$begin 'PhysicalDimensions'
					Polygon(7, 0, vertex(0, 0), vertex(10, 0), vertex(10, 10), vertex(0, 10))
				$end 'PhysicalDimensions'
			$end 'TopLayout'
		$end 'Design'
	$end 'LayoutData'
$end 'TarvexNeutralFile'
"""


def check_small(browser, work, tnfview):
    tnf = os.path.join(work, "small.tnf")
    with open(tnf, "w") as f:
        f.write(SMALL)
    subprocess.run([tnfview, tnf], check=True)
    browser.load(os.path.join(work, "small.html"))
    page = Page(browser, "small board")
    page.expect("a straight top trace", 4, 1, TOP)
    # Arc(-1) from (1, 9) to (5, 9) is counter-clockwise: it dips to (3, 8).
    page.expect("the middle of a counter-clockwise arc", 3, 8, TOP)
    page.expect("the far side of that arc's circle", 3, 10.2, TOP, equal=False)
    page.expect("outside the board", -0.3, 5, BACKGROUND)
    page.expect("a via pad on the top", 8.4, 3, TOP)
    page.show_layer(0, False)
    page.expect("the plane under a hidden top trace", 4, 1, BOTTOM)
    page.expect("a bottom via pad", 8.4, 3, BOTTOM)
    page.expect("inside a round void", 4.5, 6.5, SUBSTRATE)
    page.expect("inside a square void", 8.5, 8, SUBSTRATE)
    page.expect("on the plane", 7, 5, BOTTOM)
    # The part on the bottom at 90 degrees: its pin (1, 0) is mirrored to
    # (-1, 0) and turned to (0, -1), inside the round void; the pad would be
    # at (5, 6) if the part were turned without the mirror.
    page.expect("the bottom part's pad", 5, 4, BOTTOM)
    page.expect("where an unmirrored pad would be", 5, 6, SUBSTRATE)
    page.show_layer(2, False)
    page.expect("a hidden plane", 7, 5, SUBSTRATE)
    check_zoom_and_pan(browser, page)
    return page


def check_zoom_and_pan(browser, page):
    """The wheel zooms about the pointer; a drag moves the board with the
    mouse."""
    px, py = browser.evaluate("tnfView.toPage(3, 3)")
    scale = browser.evaluate("document.getElementById('board').getScreenCTM().a")
    browser.call("Input.dispatchMouseEvent", type="mouseWheel", x=px, y=py, deltaX=0, deltaY=-200)
    bx, by = browser.evaluate("tnfView.toBoard(%r, %r)" % (px, py))
    zoomed = browser.evaluate("document.getElementById('board').getScreenCTM().a")
    if not (zoomed > scale * 1.2 and abs(bx - 3) < 0.01 and abs(by - 3) < 0.01):
        page.failures.append("wheel: scale %g to %g, the point under the pointer went to (%g, %g)" % (
            scale, zoomed, bx, by))
    browser.call("Input.dispatchMouseEvent", type="mousePressed", x=px, y=py, button="left", clickCount=1)
    for step in range(1, 6):
        browser.call("Input.dispatchMouseEvent", type="mouseMoved", x=px + 20 * step, y=py + 10 * step,
                     button="left", buttons=1)
    browser.call("Input.dispatchMouseEvent", type="mouseReleased", x=px + 100, y=py + 50, button="left",
                 clickCount=1)
    qx, qy = browser.evaluate("tnfView.toPage(3, 3)")
    if abs(qx - (px + 100)) > 1 or abs(qy - (py + 50)) > 1:
        page.failures.append("drag by (100, 50) moved the point from (%g, %g) to (%g, %g)" % (px, py, qx, qy))


def check_demo(browser, work, tnfview, translator, source, screenshot):
    tnf = os.path.join(work, "Demo4Layer.tnf")
    subprocess.run([translator, os.path.join(source, "examples", "Demo4Layer"), tnf], check=True,
                   stderr=subprocess.DEVNULL)
    subprocess.run([tnfview, tnf], check=True)
    browser.load(os.path.join(work, "Demo4Layer.html"))
    if screenshot:
        with open(screenshot, "wb") as f:
            f.write(browser.screenshot())
    page = Page(browser, "Demo4Layer")
    page.expect("the +3V3 trace on Top_1", 22, 21.905, TOP)
    page.expect("outside the board", -1, 20, BACKGROUND)
    page.hover("the +3V3 trace", 22, 21.905, ["net +3V3", "on Top_1"])
    # U1's pin 8 (SOIC8 at (18, 20), pin at (2.7, 1.905)) is on net +3V3.
    page.hover("U1 pin 8", 20.7, 21.905, ["pin U1.8", "net +3V3"])
    page.only_layer(1, 4)
    page.hover("the GND plane over U1 pin 8 on the hidden top", 20.7, 21.905, ["net GND", "on PLANE_2"],
               absent=["U1.8"])
    # The GND plane PLANE_2 keeps a void of 7 mm round the mounting hole at
    # (45, 5), whose inner pad is 6 mm and whose drill is 3.2 mm.
    page.expect("inside the void round H2", 45, 8.25, SUBSTRATE)
    page.expect("the GND plane", 45, 9.5, INNER1)
    page.show_layer(1, False)
    page.expect("the hidden GND plane", 45, 9.5, SUBSTRATE)
    return page


def check_minimal(browser, work, tnfview, translator, source):
    tnf = os.path.join(work, "Minimal2Layer.tnf")
    subprocess.run([translator, os.path.join(source, "examples", "Minimal2Layer"), tnf], check=True,
                   stderr=subprocess.DEVNULL)
    subprocess.run([tnfview, tnf], check=True)
    browser.load(os.path.join(work, "Minimal2Layer.html"))
    page = Page(browser, "Minimal2Layer")
    box = browser.evaluate("document.getElementById('board').getAttribute('viewBox')").split()
    page.expect("outside the board", float(box[0]) + 0.01 * float(box[2]), -float(box[1]) - float(box[3]) / 2,
                BACKGROUND)
    return page


def check_odd_files(browser, work, tnfview):
    """Damaged copies of the small board (a fixed seed, so every run sees the
    same files): the program refuses them or writes a page that loads without
    a script or console error, such as path data the browser can't read."""
    import random
    rng = random.Random(18)
    page = Page(browser, "damaged small boards")
    odd = SMALL.replace("Circle(1))", "Circle(-1))").replace("0.6, 0.6, 'Round'", "-0.6, -0.6, 'Round'")
    texts = [odd, SMALL.replace("Polygon(7, 0,", "Polygon(7, 0)").replace("vertex(10, 10)", "vertex(1e308, -1e308)")]
    for _ in range(12):
        b = bytearray(SMALL.encode())
        for _ in range(rng.randint(1, 20)):
            p = rng.randrange(len(b))
            if rng.random() < 0.5:
                b[p] = rng.choice(b"(),'=$\n0123456789-.eE aN")
            else:
                del b[p:p + rng.randint(1, 30)]
        texts.append(b.decode(errors="replace") + "\n$end 'TarvexNeutralFile'\n")
    for i, text in enumerate(texts):
        tnf = os.path.join(work, "odd%d.tnf" % i)
        with open(tnf, "w") as f:
            f.write(text)
        run = subprocess.run([tnfview, tnf], stderr=subprocess.PIPE)
        if run.returncode not in (0, 1):
            page.failures.append("odd%d.tnf: exit status %d: %s" % (i, run.returncode, run.stderr[-300:]))
        elif run.returncode == 0:
            browser.load(os.path.join(work, "odd%d.html" % i))
            for e in browser.errors():
                page.failures.append("odd%d.tnf: %s" % (i, e))
            browser.events = []
    return page


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--tnfview")
    ap.add_argument("--translator")
    ap.add_argument("--source")
    ap.add_argument("--screenshot")
    ap.add_argument("--measure")
    args = ap.parse_args()
    exe = find_chromium()
    if not exe:
        print("SKIPPED: chromium is not installed (bash scripts/install-deps installs it); "
              "the TnfView pages were not checked in a browser", flush=True)
        return SKIP
    try:
        browser = Browser(exe)
    except Exception as e:
        print("SKIPPED: chromium does not start here (%s); the TnfView pages were not checked" % e, flush=True)
        return SKIP
    try:
        if args.measure:
            start = time.time()
            browser.load(args.measure, timeout=600)
            loaded = time.time()
            shot = browser.screenshot()
            if args.screenshot:
                with open(args.screenshot, "wb") as f:
                    f.write(shot)
            print("%s: loaded and drawn in %.1f s, captured after %.1f s; errors: %s" % (
                args.measure, loaded - start, time.time() - start, browser.errors() or "none"))
            return 0
        work = tempfile.mkdtemp(prefix="tnfview-browser-")
        try:
            pages = [check_small(browser, work, args.tnfview),
                     check_demo(browser, work, args.tnfview, args.translator, args.source, args.screenshot),
                     check_minimal(browser, work, args.tnfview, args.translator, args.source)]
            errors = browser.errors()
            browser.events = []
            pages.append(check_odd_files(browser, work, args.tnfview))
        finally:
            shutil.rmtree(work, ignore_errors=True)
        failures = [f for p in pages for f in p.failures] + ["script or console error: " + e for e in errors]
        for f in failures:
            print("FAILED: " + f)
        print("%d pages checked in chromium, %d failures" % (len(pages), len(failures)))
        return 1 if failures else 0
    finally:
        browser.close()


if __name__ == "__main__":
    sys.exit(main())
