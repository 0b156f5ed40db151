"""Helpers of the headless host test: a Standard MIDI File of a few notes,
the session-file edits the host's script interface can't make (a MIDI
source and region on the track's playlist, the plug-in's saved chunk), and
reading 32-bit float WAV files."""

import base64
import re
import struct

TICKS_PER_QUARTER = 960  # at the default 120 BPM one tick is 1/1920 s
BEAT_TICKS = 1920  # the host's ticks per beat

# (note, start seconds, length seconds, velocity)
NOTES = [(48, 0.25, 0.75, 100), (60, 0.25, 0.4, 90), (64, 0.5, 0.4, 80), (67, 0.75, 0.5, 110),
         (72, 1.0, 0.5, 127)]


def _var(n):
    out = [n & 0x7F]
    n >>= 7
    while n:
        out.insert(0, 0x80 | (n & 0x7F))
        n >>= 7
    return bytes(out)


def note_events():
    """(tick, status, data1, data2), time ordered, note-offs first."""
    events = []
    for note, start, length, velocity in NOTES:
        events.append((round(start * 2 * TICKS_PER_QUARTER), 0x90, note, velocity))
        events.append((round((start + length) * 2 * TICKS_PER_QUARTER), 0x80, note, 0))
    events.sort(key=lambda e: (e[0], e[1] != 0x80))
    return events


def write_midi(path):
    track = b"\x00\xFF\x03\x05notes"  # the track's name
    now = 0
    for tick, status, d1, d2 in note_events():
        track += _var(tick - now) + bytes([status, d1, d2])
        now = tick
    track += b"\x00\xFF\x51\x03" + (500000).to_bytes(3, "big")  # 120 BPM
    track += b"\x00\xFF\x2F\x00"
    data = b"MThd" + struct.pack(">IHHH", 6, 0, 1, TICKS_PER_QUARTER)
    data += b"MTrk" + struct.pack(">I", len(track)) + track
    with open(path, "wb") as f:
        f.write(data)
    return max(e[0] for e in note_events())


def add_region(session_path, source_name, length_ticks):
    """Puts a whole-file MIDI region of the source at the start of the MIDI
    track's playlist, and the source in the session's list."""
    text = open(session_path, encoding="utf-8").read()
    counter = int(re.search(r'id-counter="(\d+)"', text).group(1))
    source_id, whole_id, region_id = counter + 1, counter + 2, counter + 3
    text = re.sub(r'id-counter="\d+"', 'id-counter="%d"' % (counter + 10), text, count=1)
    # Lengths are distances with the position they start from.
    length = "b%d@a0" % (length_ticks * BEAT_TICKS // TICKS_PER_QUARTER)

    def region(rid, name):
        return ('<Region name="%s" muted="0" opaque="1" locked="0" video-locked="0" automatic="0" '
                'whole-file="%d" import="0" external="0" sync-marked="0" left-of-split="0" right-of-split="0" '
                'hidden="0" position-locked="0" valid-transients="0" start="b0" length="%s" position="a0" '
                'sync-position="b0" ancestral-start="b0" ancestral-length="b0@a0" stretch="1" shift="1" '
                'layering-index="0" tags="" id="%d" type="midi" first-edit="nothing" source-0="%d" '
                'master-source-0="%d"/>' % (name, 1 if rid == whole_id else 0, length, rid, source_id, source_id))

    source = '<Source name="%s" type="midi" flags="" id="%d" origin=""/>' % (source_name, source_id)
    text = text.replace("<Sources/>", "<Sources>\n    %s\n  </Sources>" % source, 1)
    text = text.replace("<Regions/>", "<Regions>\n    %s\n  </Regions>" % region(whole_id, "notes"), 1)
    text, n = re.subn(r'(<Playlist [^>]*type="midi"[^>]*)/>',
                      lambda m: m.group(1) + ">\n      " + region(region_id, "notes.1") + "\n    </Playlist>",
                      text, count=1)
    if n != 1:
        raise RuntimeError("no MIDI playlist in the session")
    open(session_path, "w", encoding="utf-8").write(text)


def set_chunk(session_path, chunk_bytes):
    """Replaces the plug-in's saved chunk."""
    text = open(session_path, encoding="utf-8").read()
    encoded = base64.b64encode(chunk_bytes).decode("ascii")
    text, n = re.subn(r'(<chunk[^>]*>)[^<]*(</chunk>)', lambda m: m.group(1) + encoded + m.group(2), text)
    if n != 1:
        raise RuntimeError("expected one plug-in chunk in the session, found %d" % n)
    open(session_path, "w", encoding="utf-8").write(text)


def read_float_wav(path):
    """(rate, channels, [frames of channel tuples]) of a 32-bit float WAV."""
    data = open(path, "rb").read()
    if data[:4] != b"RIFF" or data[8:12] != b"WAVE":
        raise RuntimeError(path + ": not a WAV file")
    pos, fmt, samples = 12, None, None
    while pos + 8 <= len(data):
        cid, size = data[pos:pos + 4], struct.unpack("<I", data[pos + 4:pos + 8])[0]
        body = data[pos + 8:pos + 8 + size]
        if cid == b"fmt ":
            fmt = struct.unpack("<HHIIHH", body[:16])
        elif cid == b"data":
            samples = body
        pos += 8 + size + (size & 1)
    if fmt is None or samples is None:
        raise RuntimeError(path + ": no format or data")
    tag, channels, rate, _, _, bits = fmt
    if bits != 32 or tag not in (3, 0xFFFE):
        raise RuntimeError(path + ": not 32-bit float (tag %d, %d bits)" % (tag, bits))
    count = len(samples) // 4
    values = struct.unpack("<%df" % count, samples[:count * 4])
    return rate, channels, [values[i:i + channels] for i in range(0, count, channels)]


def connect_to_master(session_path, track):
    """Connects the track's two audio outputs to the master bus. The host
    makes these connections from a thread of its own after it adds a track,
    so a session saved at once may lack them."""
    text = open(session_path, encoding="utf-8").read()
    for channel in (1, 2):
        out = "%s/audio_out %d" % (track, channel)
        master = "Master/audio_in %d" % channel
        for port, other in ((out, master), (master, out)):
            empty = '<Port type="audio" name="%s"/>' % port
            if empty in text:
                text = text.replace(empty, '<Port type="audio" name="%s">\n          <Connection other="%s"/>\n'
                                    '        </Port>' % (port, other), 1)
            elif '<Connection other="%s"/>' % other not in text:
                raise RuntimeError("port %s not found in the session" % port)
    open(session_path, "w", encoding="utf-8").write(text)
