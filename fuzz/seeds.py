#!/usr/bin/env python3
"""Writes what the fuzzers start from: fuzz/corpus/TARGET/NAME. Run it after changing it, and commit both."""

import pathlib
import struct

HOME = pathlib.Path(__file__).parent


def seed(target, name, data):
    folder = HOME / "corpus" / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(data.encode() if isinstance(data, str) else data)


# The target files: a byte says which kind of file stands behind it.
CONFIG, SETTINGS, MENU = b"\x00", b"\x01", b"\x02"


def ordered(orders, text):
    """A section-and-parameter file behind the orders for it."""
    return CONFIG + bytes([len(orders)]) + orders + text.encode()


# ---- Section-and-parameter files

plain = "# head\n\n[S]\n\ta = 1 # one\nb c\t=\ttwo\nlone\nlone = again\n\nhidden = 3\n[T]\n# note\nx == y=z\n #end\nz = 1"


def write(by_place, section, name, offset, value):
    return bytes([by_place, section, name, offset, len(value)]) + value.encode()


seed("files", "config_read", ordered(b"", plain))
seed("files", "config_write", ordered(write(0, 2, 2, 0, "new") + write(0, 3, 5, 0, "a # b"), plain))
seed("files", "config_write_at", ordered(write(1, 2, 2, 4, "new") + write(1, 3, 3, 0, "") + write(1, 2, 2, 99, "far"), plain))
seed("files", "config_returns", ordered(write(0, 2, 2, 0, "new"), plain.replace("\n", "\r\n") + "\r\n\r\n"))
seed("files", "config_brackets", ordered(write(0, 4, 3, 0, "v"), "[S\na=1\n []\n=x\nb\n[ U ] tail\nb = 2\n"))

values = [
    ("name", "AutoCAD Plug-in"), ("version", "2.9.0"), ("transSensBase", "20000"), ("rotSensBase", "10000"),
    ("minThreshold", "0"), ("maxContMoveTime", "500"), ("toggleRotationCenter", "on"), ("toggleRotationAxis", "off"),
    ("scrollTreeAndList", "on"), ("useInt3dIntrfce", "off"), ("logFile", "a.txt"), ("maxSize", "5000"),
    ("logToFile", "on"), ("logToCnsl", "off"), ("warning", "on"), ("creation", "on"), ("trace", "off"),
    ("devcom", "off"), ("intcom", "off"), ("info", "on"), ("debug", "off"), ("tmp", "off"), ("fileToLog", ""),
]


def settings(changes=(), without=(), between=" = ", end="\n"):
    text = "[PROGRAM]" + end
    for name, value in values:
        if name == "logFile":
            text += end + "[LOGGING]" + end
        if name not in without:
            text += "\t" + name + between + dict(changes).get(name, value) + end
    return text


seed("files", "settings_whole", SETTINGS + settings().encode())
seed("files", "settings_lacks_a_key", SETTINGS + settings(without=("tmp",)).encode())
seed("files", "settings_odd_values", SETTINGS + settings([("transSensBase", "99999999999"), ("rotSensBase", "-12x"),
                                                             ("minThreshold", "none"), ("name", "= a\tb")]).encode())
seed("files", "settings_returns", SETTINGS + settings(end="\r\n", between="=").encode())
seed("files", "settings_empty", SETTINGS)

seed("files", "menu_modes_and_macros", MENU +
     b"[Modes]\nNone\n2D = 1\n3D = 2\n\n[MenuBar]\nA = {id}_LINE;1,1;|rest\nB = {x}M=*P1\nC = no macro\nD = {}\n"
     b"E = {e}^C^C_ZOOM;_ALL\n")
seed("files", "menu_no_modes", MENU + b"[MenuBar]\nA={a}b\n")
seed("files", "menu_many_cuts", MENU +
     "[Modes]\nx\n[MenuBar]\na = }}|}\nb = };;;\nc = } |\nd = }M=;M=\nf = }\xe4\xff;#g\n".encode())

# ---- Drawings


def dxf(entities, blocks=""):
    def section(name, body):
        return "0 SECTION 2 " + name + " " + body + " 0 ENDSEC "
    words = (section("BLOCKS", blocks) if blocks else "") + section("ENTITIES", entities) + "0 EOF"
    return "\n".join(words.split()) + "\n"


seed("dxf", "line_point", dxf("0 LINE 8 0 10 0 20 0 30 0 11 1 21 2 31 3 0 POINT 10 1 20 1 30 1"))
seed("dxf", "curves", dxf("0 CIRCLE 10 1 20 2 30 3 40 4 210 0 220 1 230 0 0 ARC 10 0 20 0 40 2 50 30 51 200 "
                         "0 ELLIPSE 10 0 20 0 30 0 11 3 21 0 31 0 40 0.5 41 0 42 6.28"))
seed("dxf", "polylines", dxf("0 LWPOLYLINE 90 3 70 1 38 2 10 0 20 0 42 1 10 1 20 0 10 1 20 1 "
                            "0 POLYLINE 66 1 70 8 0 VERTEX 10 0 20 0 30 1 0 VERTEX 10 1 20 0 30 2 0 SEQEND"))
seed("dxf", "meshes", dxf("0 POLYLINE 66 1 70 64 71 3 72 1 0 VERTEX 70 192 10 0 20 0 30 0 0 VERTEX 70 192 10 1 20 0 "
                         "30 0 0 VERTEX 70 192 10 1 20 1 30 0 0 VERTEX 70 128 71 1 72 2 73 -3 0 SEQEND "
                         "0 POLYLINE 66 1 70 16 71 2 72 2 0 VERTEX 10 0 20 0 0 VERTEX 10 1 20 0 0 VERTEX 10 0 20 1 "
                         "0 VERTEX 10 1 20 1 0 SEQEND"))
seed("dxf", "spline", dxf("0 SPLINE 70 8 71 2 72 6 73 3 74 0 40 0 40 0 40 0 40 1 40 1 40 1 10 0 20 0 30 0 10 1 20 1 "
                         "30 0 10 2 20 0 30 0"))
seed("dxf", "faces", dxf("0 3DFACE 10 0 20 0 30 0 11 1 21 0 31 0 12 1 22 1 32 0 13 0 23 1 33 0 "
                        "0 SOLID 10 0 20 0 11 1 21 0 12 0 22 1 13 1 23 1 0 TRACE 10 0 20 0 11 1 21 0 12 0 22 1 13 1 23 1"))
seed("dxf", "inserts", dxf("0 INSERT 2 B 10 1 20 1 30 0 41 2 42 2 43 1 50 45 70 2 71 2 44 3 45 3 0 INSERT 2 NONE 10 0 20 0",
                          "0 BLOCK 2 A 10 0 20 0 0 LINE 10 0 20 0 11 1 21 1 0 ENDBLK "
                          "0 BLOCK 2 B 10 1 20 1 0 INSERT 2 A 10 0 20 0 0 INSERT 2 B 10 0 20 0 0 ENDBLK"))
seed("dxf", "left_out", dxf("0 TEXT 10 0 20 0 40 1 1 Word 0 POINT 10 0 20 0"))
seed("dxf", "no_drawing", "0\nSECTION\n2\nHEADER\n0\nENDSEC\n0\nEOF\n")

# ---- Device link


def frame(kind, payload=b""):
    return struct.pack("<HH", len(payload), kind) + payload


def text(value):
    return struct.pack("<H", len(value)) + value


MAGIC, VERSION = 0x4B4C564F, 2
hello = frame(1, struct.pack("<IH", MAGIC, VERSION) + text(b"acad"))
questions = (frame(2, struct.pack("<I", 1)) + frame(3, struct.pack("<Ii", 2, 0)) + frame(4, struct.pack("<Ii", 3, 1)) +
             frame(5, struct.pack("<I", 4) + text(b"AutoCAD") + text(b"3D")))


def pieces(data, size=100):
    return b"".join(bytes([len(data[i:i + size])]) + data[i:i + size] for i in range(0, len(data), size))


def daemon(data):
    return b"\0" + data


def client(*parts):
    return b"\1" + b"".join(parts)


events = b"\xf1\x10\x00" + b"\xf2\x20\x00\x02\x00" + b"\xf1\x00\x00" + b"\xf1\x05\x00"
seed("link", "questions", daemon(pieces(hello + questions)))
seed("link", "in_bits", daemon(pieces(hello + questions, 5)))
seed("link", "events", daemon(pieces(hello) + events + pieces(questions) + events))
seed("link", "no_hello", daemon(pieces(questions)))
seed("link", "old_version", daemon(pieces(frame(1, struct.pack("<IH", MAGIC, 1) + text(b"x")))))
seed("link", "too_long", daemon(pieces(hello + b"\xff\xff\x02\x00")))

welcome = frame(0x81, struct.pack("<IH", MAGIC, VERSION))
motion = frame(0x86, struct.pack("<6h", 1, -2, 3, 0, 32767, -32768))
event = frame(0x87, struct.pack("<i", 0x20020))
answers = [frame(kind, struct.pack("<I", number + 1) + bytes(size))
           for number, (kind, size) in enumerate(((0x82, 4), (0x83, 100), (0x84, 152), (0x85, 4)))]
ask = b"\xf0\xf1\xf2\xf3"
seed("link", "answers", client(pieces(welcome), ask, pieces(event + b"".join(answers) + motion + event)))
seed("link", "late_answers", client(pieces(welcome), ask, b"\xf4\xf4", pieces(b"".join(answers) + event)))
seed("link", "unasked_answers", client(pieces(welcome), ask[:1], pieces(event + answers[0] + answers[1])))
seed("link", "split", client(pieces(welcome + motion, 5), pieces(event)))
seed("link", "no_welcome", client(pieces(event)))
seed("link", "negative_event", client(pieces(welcome + event + frame(0x87, b"\xff\xff\xff\xff") + event)))

# ---- Engine: a letter, and bytes as engine_fuzz.cpp takes them apart. A double from -64 to 63 is one byte.

NAN, INF, MAX, DENORM = b"\xff", b"\xfe", b"\xfc", b"\xf9"
ZERO, ONE, TEN = b"\x00", b"\x01", b"\x0a"


def sample(*axes):
    return b"s" + struct.pack("<6h", *axes)


def view(flags, *numbers):
    return b"v" + bytes([flags]) + b"".join(numbers)


origin = ZERO * 3
above = ZERO + ZERO + TEN
upright = ZERO + ONE + ZERO
passes = b"pptp"
all_axes = sample(300, -300, 200, 100, -100, 50)
full = sample(32767, -32768, -32768, 32767, -32768, 32767)
line = b"e" + origin + b"\x00" + TEN + ONE + ONE
circle = b"e" + origin + b"\x02" + upright + TEN
three = [line, circle, b"e" + above + b"\x03" + origin + b"\x01"]

seed("engine", "plain_motion", view(0, above, origin, upright, TEN, TEN) + all_axes + passes + sample(0, 0, 0, 0, 0, 0) + b"t")
seed("engine", "no_field", view(5, above, origin, upright, ZERO) + full + passes)
seed("engine", "up_along_sight", view(2, above, origin, TEN, TEN) + all_axes + passes)
seed("engine", "eye_is_target", view(1, above, above, upright, TEN, TEN) + all_axes + passes)
seed("engine", "no_numbers", b"".join(view(1, above, origin, upright, TEN, bad) + all_axes + passes +
                                     view(0, bad, ZERO, TEN, origin, upright, TEN, TEN) + full + passes
                                     for bad in (NAN, INF, MAX, DENORM)))
seed("engine", "rotation_codes", view(1, above, origin, upright, TEN, TEN) + b"".join(
    b"r" + struct.pack("<i", code) + all_axes + b"p" for code in (0, 1, 2, 3, 4, 9, 13, 104, -1, 2**31 - 1, -2**31)))
seed("engine", "no_divisors", b"b" + bytes(4) + b"B" + bytes(4) + full + passes)
seed("engine", "selection", b"".join(three) + b"S\x01" + b"y" + all_axes + passes + b"S\x07" + sample(0, 0, 0, 0, 0, 0) +
     b"p" + all_axes + passes + b"o" + all_axes + passes)
seed("engine", "refusing_objects", b"".join(three) + b"S\x07o" + b"m\x00\x01m\x01\x02m\x02\x04" + full + passes)
seed("engine", "layout", b"l\x01" + TEN + TEN + TEN + ZERO + ZERO + all_axes + passes + b"l\x01" + TEN + ZERO + INF + NAN + ZERO +
     full + passes + b"l\x00" + ONE * 5 + b"pt")
seed("engine", "layout_selection", b"".join(three) + b"S\x07ol\x01" + TEN * 3 + ZERO * 2 + all_axes + passes)
seed("engine", "no_variables", b"V\x01\x01" + all_axes + b"pV\x00\x01p" + b"V\x01\x00\xff\xffp")
windows = b"w\x04\x00" + struct.pack("<4h", 0, 0, 100, 100) + struct.pack("<4i", 0, 2000, 10, 5) + struct.pack("<2h", 5, 5)
child = b"w\x0e\x02" + struct.pack("<4h", 0, 0, 50, 50) + struct.pack("<8i", 0, 20, 1, 0, -1, 2**31 - 1, -1, 7) + struct.pack("<2h", 5, 5)
wheel = b"w\x00\x01" + struct.pack("<4h", 0, 0, 100, 100) + struct.pack("<2h", 5, 5)
seed("engine", "scrolling", windows + all_axes + passes + child + full + passes)
seed("engine", "wheel", wheel + full + passes + sample(0, 5, 5, 0, 0, 0) + passes)
seed("engine", "keys", b"M_LINE;1,1;ZE" + b"MM=*P1;_ALL;2" + b"k" + struct.pack("<i", 0) + b"tqk" + struct.pack("<i", 1) + b"tqk" +
     struct.pack("<i", 2**31 - 1) + b"t" + b"".join(b"c" + bytes([c]) + b"tq" for c in (9, 10, 11, 12, 0x16, 0x17, 0x18, 0x99)))
seed("engine", "no_document", full + b"pd\x01" + full + b"pd\x02pd\x08p" + b"k" + bytes(4) + b"t")
seed("engine", "faults", b"".join(three) + b"S\x07" + full + b"f\x03\x00pf\x05\x01pf\x09\x01tf\x0c\x00p")
