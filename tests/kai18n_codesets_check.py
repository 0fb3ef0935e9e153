#!/usr/bin/env python3
"""Checks every byte of every 8-bit code set of the library against Python's
codec of that set: the byte's character, the way back, and that no other
character converts to a byte. Usage: kai18n_codesets_check.py DUMP_PROGRAM"""

import subprocess
import sys

# The library's numbering of the 8-bit sets and the codec of each.
CODECS = {
    1: 'cp1252', 2: 'latin_1', 3: 'iso8859_2', 4: 'iso8859_15', 5: 'ascii',
    6: 'cp1250', 7: 'cp1251', 8: 'cp1253', 9: 'cp1254', 10: 'cp1255',
    11: 'cp1256', 12: 'cp1257', 13: 'cp1258', 14: 'iso8859_3', 15: 'iso8859_4',
    16: 'iso8859_5', 17: 'iso8859_6', 18: 'iso8859_7', 19: 'iso8859_8',
    20: 'iso8859_9', 21: 'iso8859_10', 22: 'iso8859_13', 23: 'iso8859_14',
    24: 'iso8859_16', 25: 'koi8_r', 26: 'koi8_u',
}
UNDEFINED = 0xFFFD


def expected_byte_map(codec):
    chars = {}
    for b in range(256):
        try:
            chars[b] = ord(bytes([b]).decode(codec))
        except UnicodeDecodeError:
            chars[b] = UNDEFINED
    return chars


def main():
    out = subprocess.run([sys.argv[1]], check=True, capture_output=True, text=True).stdout
    sets, current = {}, None
    for line in out.splitlines():
        if not line.strip():
            continue
        word, *rest = line.split()
        if word == 'set':
            current = sets.setdefault(int(rest[0]), {'byte': {}, 'from': {}})
        elif word == 'byte':
            b, u, back = map(int, rest)
            current['byte'][b] = (u, back)
        elif word == 'from':
            u, b = map(int, rest)
            current['from'][u] = b
    errors = []
    if sorted(sets) != sorted(CODECS):
        errors.append('code sets %s, expected %s' % (sorted(sets), sorted(CODECS)))
    checked = 0
    for number, codec in sorted(CODECS.items()):
        got = sets.get(number)
        if got is None:
            continue
        chars = expected_byte_map(codec)
        for b in range(256):
            u, back = got['byte'][b]
            checked += 1
            if u != chars[b]:
                errors.append('set %d byte 0x%02X: U+%04X, codec gives U+%04X' % (number, b, u, chars[b]))
            want_back = b if chars[b] != UNDEFINED else ord('?')
            if back != want_back:
                errors.append('set %d byte 0x%02X: back to 0x%02X, expected 0x%02X' % (number, b, back, want_back))
        # Exactly the characters the codec encodes (above ASCII) convert to a byte.
        expected_from = {}
        for u in range(0x80, 0x10000):
            if 0xD800 <= u <= 0xDFFF:
                continue
            try:
                encoded = chr(u).encode(codec)
            except UnicodeEncodeError:
                continue
            if len(encoded) == 1 and encoded != b'?':
                expected_from[u] = encoded[0]
        if got['from'] != expected_from:
            extra = set(got['from'].items()) - set(expected_from.items())
            missing = set(expected_from.items()) - set(got['from'].items())
            errors.append('set %d: converts %d characters the codec does not, misses %d: %s %s'
                          % (number, len(extra), len(missing), sorted(extra)[:5], sorted(missing)[:5]))
    for e in errors[:50]:
        print(e)
    print('%d bytes of %d code sets checked, %d errors' % (checked, len(sets), len(errors)))
    return 1 if errors else 0


if __name__ == '__main__':
    sys.exit(main())
