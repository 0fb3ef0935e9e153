#!/usr/bin/env python3
"""Generates the character tables of the internationalisation library.

Usage: python3 i18n/tools/gen_tables.py OUTPUT_DIR

Writes ka_codesets.inc (the 8-bit code sets: byte to Unicode and Unicode back
to byte) and ka_unicode.inc (collation
orders, case mappings and expansions of the whole Basic Multilingual Plane).
Only Python's standard library is used (unicodedata, codecs), so the output
depends on nothing but the Python version's Unicode data; it is deterministic
(no dates, everything sorted), which lets a test regenerate and compare.

Order layout (16 bits):
      0          end of text
      1 ..    79  spaces and C0 controls; 13 is the undefined ordering indicator
     80 .. 16127  symbols, index = order - 80; indices 32..139 are fixed names,
                  0..31 the C1 controls, the others follow from 140
  16128 .. 16383  digits: 16128 + 10 * value (bit 0: expand flag)
  16384 .. 32767  Latin letters: bits 0-1 extension, 2-6 base letter (A = 3),
                  7-11 diacritic, 12-13 case (0 upper), bit 14 set
  32768 .. 65519  letters of other scripts, script by script, then ideographs
  65520 .. 65535  implicit lead orders: a character without a place of its own
                  sorts as two orders, lead 65520 + (cp >> 12) and then
                  32768 + (cp & 0xFFF)
"""

import codecs
import os
import re
import sys
import unicodedata

# --- Constants of the order layout ---------------------------------------------

UNDEFINED = 13
SYMBOL_BASE = 80
SYMBOL_FREE = 140
DIGIT_BASE = 16128
LETTER = 0x4000
OTHER_BASE = 0x8000
IMPLICIT_LEAD = 0xFFF0
OTHER_END = IMPLICIT_LEAD  # first order not available to single characters

CASE_LOWER = 1

# Symbols whose indices are fixed (the order descriptions name them).
NAMED_SYMBOLS = {
    0x005F: 32, 0x00AF: 34, 0x00AD: 35, 0x002D: 36, 0x002C: 37, 0x003B: 38,
    0x003A: 39, 0x0021: 40, 0x00A1: 41, 0x003F: 42, 0x002F: 44, 0x002E: 46,
    0x00B7: 49, 0x00B8: 50, 0x0027: 52, 0x0022: 55, 0x00AB: 58, 0x00BB: 59,
    0x0028: 60, 0x0029: 62, 0x005B: 64, 0x005D: 65, 0x007B: 66, 0x007D: 67,
    0x00A7: 68, 0x00B6: 69, 0x00A9: 70, 0x00AE: 71, 0x0040: 73, 0x00A4: 74,
    0x00A2: 75, 0x0024: 76, 0x00A3: 77, 0x00A5: 78, 0x002A: 79, 0x005C: 80,
    0x0026: 81, 0x0023: 82, 0x0025: 83, 0x002B: 85, 0x00B1: 87, 0x00B4: 88,
    0x0060: 89, 0x005E: 91, 0x00A8: 94, 0x007E: 96, 0x00F7: 98, 0x00D7: 99,
    0x003C: 101, 0x003D: 103, 0x003E: 105, 0x00AC: 106, 0x007C: 107,
    0x00A6: 108, 0x00B0: 109, 0x00B5: 110, 0x00BF: 139,
}

# Diacritic field values 1..14: the marks the order descriptions name.
NAMED_DIACRITICS = {
    0x0327: 1, 0x0301: 2, 0x0300: 3, 0x0302: 4, 0x0303: 5, 0x0308: 6,
    0x030A: 7, 'STROKE': 8, 0x030C: 9, 0x0304: 10, 0x0306: 11, 0x0307: 12,
    0x0328: 13, 0x030B: 14,
}
LIGATURE = 15  # first order of a ligature's expansion (æ = a + e, ß = s + s)
VARIANT = 16   # compatibility variant of a letter (fullwidth, superscript, ª)
ETH = 17       # eth sorts with d
LAST_DIACRITIC = 31

# Latin letters without a decomposition that the collation places explicitly:
# name tail -> (expansion letters, diacritic of the first, extension of the first).
# Ligatures and sharp s expand into their letters; eth sorts with d, thorn after
# z; dotless i, eng, f with hook and t with stroke are letters of their own
# right after their base letter.
LATIN_SPECIAL = {
    'SHARP S': ('ss', LIGATURE, 0),
    'AE': ('ae', LIGATURE, 0),
    'OE': ('oe', LIGATURE, 0),
    'ETH': ('d', 'ETH', 0),
    'DOTLESS I': ('i', 0, 1),
    'ENG': ('n', 0, 1),
    'F WITH HOOK': ('f', 0, 1),
    'T WITH STROKE': ('t', 0, 1),
}
THORN_BASE = 29  # the first base index after Z

CODE_SETS = [
    (1, 'cp1252', 'Windows-1252'), (2, 'latin_1', 'ISO-8859-1'),
    (3, 'iso8859_2', 'ISO-8859-2'), (4, 'iso8859_15', 'ISO-8859-15'),
    (5, 'ascii', 'US-ASCII'), (6, 'cp1250', 'Windows-1250'),
    (7, 'cp1251', 'Windows-1251'), (8, 'cp1253', 'Windows-1253'),
    (9, 'cp1254', 'Windows-1254'), (10, 'cp1255', 'Windows-1255'),
    (11, 'cp1256', 'Windows-1256'), (12, 'cp1257', 'Windows-1257'),
    (13, 'cp1258', 'Windows-1258'), (14, 'iso8859_3', 'ISO-8859-3'),
    (15, 'iso8859_4', 'ISO-8859-4'), (16, 'iso8859_5', 'ISO-8859-5'),
    (17, 'iso8859_6', 'ISO-8859-6'), (18, 'iso8859_7', 'ISO-8859-7'),
    (19, 'iso8859_8', 'ISO-8859-8'), (20, 'iso8859_9', 'ISO-8859-9'),
    (21, 'iso8859_10', 'ISO-8859-10'), (22, 'iso8859_13', 'ISO-8859-13'),
    (23, 'iso8859_14', 'ISO-8859-14'), (24, 'iso8859_16', 'ISO-8859-16'),
    (25, 'koi8_r', 'KOI8-R'), (26, 'koi8_u', 'KOI8-U'),
]
REPLACEMENT = 0xFFFD  # what a byte the code set leaves undefined stands for

HANGUL_S, HANGUL_L, HANGUL_V, HANGUL_T = 0xAC00, 0x1100, 0x1161, 0x11A7
HANGUL_VCOUNT, HANGUL_TCOUNT, HANGUL_COUNT = 21, 28, 11172


def is_mark(ch):
    return unicodedata.category(ch).startswith('M')


def is_hangul_syllable(cp):
    return HANGUL_S <= cp < HANGUL_S + HANGUL_COUNT


# --- Latin letters ---------------------------------------------------------------

def ascii_letter_groups(text):
    """Splits text into (ASCII letter, [marks]) groups; None if anything else occurs."""
    groups = []
    for ch in text:
        if 'A' <= ch <= 'Z' or 'a' <= ch <= 'z':
            groups.append([ch, []])
        elif is_mark(ch) and groups:
            groups[-1][1].append(ord(ch))
        else:
            return None
    return groups or None


def letter_with_marks(letter, marks, fallback):
    """Parts of one letter: the mark nearest the base goes into the diacritic
    field; every further mark follows as an order of its own, the order the
    decomposed text would give it."""
    parts = [(letter, marks[0] if marks else fallback, 0)]
    parts += [(None, mark, 0) for mark in marks[1:]]
    return parts


def latin_parts(cp):
    """A Latin letter as a list of parts (letter, diacritic key, extension), or
    None. The diacritic key is a combining mark, a modifier name or a field
    value; a part whose letter is None is the combining mark in its key."""
    ch = chr(cp)
    cat = unicodedata.category(ch)
    if not (cat.startswith('L') or cat == 'Nl'):
        return None
    name = unicodedata.name(ch, '')
    nfd = unicodedata.normalize('NFD', ch)
    nfkd = unicodedata.normalize('NFKD', ch)
    groups = ascii_letter_groups(nfkd)
    if groups is not None:
        if len(groups) == 1:
            return letter_with_marks(groups[0][0], groups[0][1], VARIANT if nfkd != nfd else 0)
        parts = []
        for i, (letter, marks) in enumerate(groups):
            parts += letter_with_marks(letter, marks, LIGATURE if i == 0 else 0)
        return parts
    m = re.match(r'LATIN (CAPITAL|SMALL) (?:LETTER|LIGATURE) (.+)$', name)
    if not m:
        return None
    upper = m.group(1) == 'CAPITAL'
    tail = m.group(2)
    if tail == 'THORN':
        return [('THORN' if upper else 'thorn', 0, 0)]
    if tail in LATIN_SPECIAL:
        letters, key, ext = LATIN_SPECIAL[tail]
        if upper:
            letters = letters.upper()
        return [(letters[0], key, ext)] + [(c, 0, 0) for c in letters[1:]]
    m2 = re.match(r'([A-Z]) WITH (.+)$', tail)
    if m2:
        letter = m2.group(1) if upper else m2.group(1).lower()
        modifier = m2.group(2).split(' AND ')[0]
        # Marks that decompose off a letter with a modifier (stroke and acute)
        # follow it as in decomposed text.
        return letter_with_marks(letter, [modifier] + [ord(c) for c in nfd[1:] if is_mark(c)], 0)
    return None


def diacritic_numbers(latin):
    """Field values for every diacritic key: the named 14, ligature, variant and
    eth, then the other keys by how many letters use them while values last.
    Keys left without a value are absent from the result."""
    numbers = dict(NAMED_DIACRITICS)
    numbers.update({0: 0, LIGATURE: LIGATURE, VARIANT: VARIANT, 'ETH': ETH})
    counts = {}
    for parts in latin.values():
        for letter, key, _ in parts:
            if letter is not None and key not in numbers:
                counts[key] = counts.get(key, 0) + 1
    ranked = sorted(counts, key=lambda k: (-counts[k], str(k)))
    for value, key in zip(range(ETH + 1, LAST_DIACRITIC + 1), ranked):
        numbers[key] = value
    return numbers


def letter_order(letter, diacritic, ext):
    if letter in ('THORN', 'thorn'):
        base, lower = THORN_BASE, letter == 'thorn'
    else:
        base, lower = ord(letter.upper()) - ord('A') + 3, letter.islower()
    return (LETTER | ((CASE_LOWER if lower else 0) << 12) | (diacritic << 7) | (base << 2) | ext)


# --- The other ranges ----------------------------------------------------------

def space_orders():
    # The C0 controls and DEL first, then the spaces, each in code order.
    controls = list(range(0x01, 0x20)) + [0x7F]
    chars = controls + [cp for cp in range(0x20, 0x10000)
                        if unicodedata.category(chr(cp)) in ('Zs', 'Zl', 'Zp')]
    orders, value = {}, 1
    for cp in chars:
        if value == UNDEFINED:
            value += 1
        orders[cp] = value
        value += 1
    assert value <= SYMBOL_BASE
    return orders


SYMBOL_RANK = {'Pc': 0, 'Pd': 0, 'Ps': 0, 'Pe': 0, 'Pi': 0, 'Pf': 0, 'Po': 0,
               'Sk': 1, 'Sm': 2, 'So': 3, 'Sc': 4, 'No': 5, 'Nl': 5, 'Cf': 6,
               'Mn': 7, 'Mc': 7, 'Me': 7, 'Lm': 8, 'Lo': 8}


def script_of(cp):
    """Groups the letters of one script: the first word of the character name,
    with the ideographs and the generic combining marks set apart."""
    name = unicodedata.name(chr(cp), '')
    if name.startswith('CJK UNIFIED IDEOGRAPH') or name.startswith('CJK COMPATIBILITY IDEOGRAPH'):
        return 'IDEOGRAPH'
    if name.startswith('COMBINING') or not name:
        return None
    return name.split(' ')[0]


def ideograph_rank(cp):
    # The unified block first, then extension A, then the compatibility block.
    if 0x4E00 <= cp <= 0x9FFF:
        return 0
    if 0x3400 <= cp <= 0x4DBF:
        return 1
    return 2


def build_orders():
    orders = {}       # cp -> list of orders (first one and expansion)
    spaces = space_orders()
    latin = {}
    others, symbols = [], []
    for cp in range(1, 0x10000):
        ch = chr(cp)
        cat = unicodedata.category(ch)
        if cat == 'Cn':
            orders[cp] = [UNDEFINED]
        elif cat in ('Cs', 'Co'):
            orders[cp] = [IMPLICIT_LEAD + (cp >> 12), OTHER_BASE + (cp & 0xFFF)]
        elif cp in spaces:
            orders[cp] = [spaces[cp]]
        elif cp in NAMED_SYMBOLS:
            orders[cp] = [SYMBOL_BASE + NAMED_SYMBOLS[cp]]
        elif 0x80 <= cp <= 0x9F:
            orders[cp] = [SYMBOL_BASE + cp - 0x80]  # symbol indices 0..31
        elif cat in ('Nd', 'No') and unicodedata.digit(ch, None) is not None:
            orders[cp] = [DIGIT_BASE + 10 * unicodedata.digit(ch)]
        elif is_hangul_syllable(cp):
            pass  # jamo expansion, below
        elif (parts := latin_parts(cp)) is not None:
            latin[cp] = parts
        elif (cat.startswith('L') or cat.startswith('M') or cat == 'Nl') and script_of(cp):
            others.append(cp)
        else:
            symbols.append(cp)

    index = SYMBOL_FREE
    for cp in sorted(symbols, key=lambda cp: (SYMBOL_RANK.get(unicodedata.category(chr(cp)), 9), cp)):
        orders[cp] = [SYMBOL_BASE + index]
        index += 1
    assert SYMBOL_BASE + index <= DIGIT_BASE, 'symbol range exhausted'

    # Latin letters whose modifier found no diacritic value sort as letters of
    # their own among the other scripts.
    numbers = diacritic_numbers(latin)
    for cp, parts in latin.items():
        if any(letter is not None and key not in numbers for letter, key, _ in parts):
            others.append(cp)
            continue
        orders[cp] = [letter_order(letter, numbers[key], ext) if letter is not None
                      else orders[key][0] for letter, key, ext in parts]

    # Other scripts: script by script in the order each first appears; inside a
    # script by lower-case base character, lower case before upper case.
    first_seen = {}
    for cp in others:
        first_seen.setdefault(script_of(cp), cp)

    def other_key(cp):
        script = script_of(cp)
        if script == 'IDEOGRAPH':
            return (1, 0, ideograph_rank(cp), cp, 0, 0, cp)
        ch = chr(cp)
        base = unicodedata.normalize('NFD', ch)[0]
        low_base = base.lower() if len(base.lower()) == 1 else base
        low = ch.lower() if len(ch.lower()) == 1 else ch
        # A lower-case letter and its upper-case form are neighbours.
        return (0, first_seen[script], 0, ord(low_base), ord(low), 0 if ch == low else 1, cp)

    value = OTHER_BASE
    for cp in sorted(others, key=other_key):
        if value < OTHER_END:
            orders[cp] = [value]
            value += 1
        else:
            orders[cp] = [IMPLICIT_LEAD + (cp >> 12), OTHER_BASE + (cp & 0xFFF)]

    for s in range(HANGUL_COUNT):
        l, v, t = s // (HANGUL_VCOUNT * HANGUL_TCOUNT), (s // HANGUL_TCOUNT) % HANGUL_VCOUNT, s % HANGUL_TCOUNT
        jamo = [orders[HANGUL_L + l][0], orders[HANGUL_V + v][0]]
        if t:
            jamo.append(orders[HANGUL_T + t][0])
        orders[HANGUL_S + s] = jamo
    return orders, numbers


# --- Case mappings -------------------------------------------------------------

def case_mappings():
    """cp -> (simple upper, simple lower, full upper if several, full lower if several)."""
    result = {}
    for cp in range(0x10000):
        ch = chr(cp)
        if unicodedata.category(ch) in ('Cs', 'Cn'):
            continue
        up, low = ch.upper(), ch.lower()
        su = ord(up) if len(up) == 1 and up != ch else 0
        sl = ord(low) if len(low) == 1 and low != ch else 0
        fu = [ord(c) for c in up] if len(up) > 1 else []
        fl = [ord(c) for c in low] if len(low) > 1 else []
        # A mapping that leaves the 16-bit plane cannot be held in 16-bit units.
        su = su if su <= 0xFFFF else 0
        sl = sl if sl <= 0xFFFF else 0
        fu = fu if all(c <= 0xFFFF for c in fu) else []
        fl = fl if all(c <= 0xFFFF for c in fl) else []
        if su or sl or fu or fl:
            result[cp] = (su, sl, fu, fl)
    return result


# --- Output --------------------------------------------------------------------

def header(version):
    return ('// Generated by i18n/tools/gen_tables.py; do not edit by hand.\n'
            '// Regenerate: python3 i18n/tools/gen_tables.py i18n/tables\n'
            '// Data: Python unicodedata and codecs, Unicode %s.\n' % version)


def rows(values, per_line=16, fmt='0x%04X'):
    out = []
    for i in range(0, len(values), per_line):
        out.append('    ' + ', '.join(fmt % v for v in values[i:i + per_line]) + ',')
    return '\n'.join(out)


def two_level(values):
    """Splits 65536 values into a stage-1 index of 256 block numbers and the
    distinct 256-value blocks."""
    blocks, index, stage1 = [], {}, []
    for hi in range(256):
        block = tuple(values[hi * 256:(hi + 1) * 256])
        if block not in index:
            index[block] = len(blocks)
            blocks.append(block)
        stage1.append(index[block])
    return stage1, blocks


def write_unicode(path, version):
    orders, numbers = build_orders()
    first = [0] * 0x10000
    for cp, seq in orders.items():
        first[cp] = seq[0]
    stage1, blocks = two_level(first)

    cases = case_mappings()
    case_values = [0] * 0x10000
    for cp, (su, sl, _, _) in cases.items():
        case_values[cp] = (su << 16) | sl
    case1, case_blocks = two_level(case_values)

    # Expansions other than Hangul syllables and implicit orders, which the
    # library computes: the further orders, the full upper and lower mappings.
    pool, specials = [], []

    def add(seq):
        if not seq:
            return (0, 0)
        offset = len(pool)
        pool.extend(seq)
        return (offset, len(seq))

    for cp in range(0x10000):
        seq = orders.get(cp, [0])
        more = seq[1:] if len(seq) > 1 and not is_hangul_syllable(cp) and seq[0] < IMPLICIT_LEAD else []
        fu, fl = cases.get(cp, (0, 0, [], []))[2:]
        if more or fu or fl:
            specials.append((cp, add(more), add(fu), add(fl)))

    lines = [header(version), '// Collation orders, case mappings and expansions of the BMP.\n']
    lines.append('namespace ka::i18n::tables {\n')
    lines.append('inline constexpr unsigned char kDiacriticCount = %d;\n' % max(numbers.values()))
    lines.append('// First collation order of every character: block of kOrderStage1[cp >> 8],')
    lines.append('// entry cp & 0xFF.')
    lines.append('inline constexpr unsigned short kOrderStage1[256] = {\n%s\n};' % rows(stage1))
    lines.append('inline constexpr unsigned short kOrderBlocks[%d][256] = {' % len(blocks))
    for b in blocks:
        lines.append('  {\n%s\n  },' % rows(list(b)))
    lines.append('};\n')
    lines.append('// Simple case mappings: upper << 16 | lower, 0 where the character has none.')
    lines.append('inline constexpr unsigned short kCaseStage1[256] = {\n%s\n};' % rows(case1))
    lines.append('inline constexpr unsigned int kCaseBlocks[%d][256] = {' % len(case_blocks))
    for b in case_blocks:
        lines.append('  {\n%s\n  },' % rows(list(b), 8, '0x%08X'))
    lines.append('};\n')
    lines.append('// Units referred to by kSpecials: further orders and full case mappings.')
    lines.append('inline constexpr unsigned short kExpansionPool[%d] = {\n%s\n};\n' % (len(pool), rows(pool)))
    def ref(entry):
        offset, count = entry
        return '{%d, kExpansionPool + %d}' % (count, offset) if count else '{0, nullptr}'

    lines.append('// Characters with expansions, by code point: the orders after the first,')
    lines.append('// then the full upper-case and lower-case mappings of several characters.')
    lines.append('inline constexpr Special kSpecials[%d] = {' % len(specials))
    for cp, more, up, low in specials:
        lines.append('    {0x%04X, %s, {%s, %s}},' % (cp, ref(more), ref(up), ref(low)))
    lines.append('};\n')
    # Hangul: the vowel and trailing consonant orders of every (V, T) pair.
    vt = []
    for v in range(HANGUL_VCOUNT):
        for t in range(HANGUL_TCOUNT):
            vt.append(first[HANGUL_V + v])
            vt.append(first[HANGUL_T + t] if t else 0)
    lines.append('// Hangul syllables expand into jamo: entry 2 * (V * 28 + T) holds the vowel')
    lines.append('// order and the trailing consonant order (0 for none).')
    lines.append('inline constexpr unsigned short kHangulVowelTrail[%d] = {\n%s\n};\n' % (len(vt), rows(vt)))
    lines.append('}  // namespace ka::i18n::tables')
    with open(path, 'w', encoding='ascii', newline='\n') as f:
        f.write('\n'.join(lines) + '\n')


def write_codesets(path, version):
    lines = [header(version), '// The 8-bit code sets: byte to Unicode, and sorted Unicode to byte.\n']
    lines.append('namespace ka::i18n::tables {\n')
    for number, codec, name in CODE_SETS:
        codecs.lookup(codec)
        to_uni = []
        for b in range(256):
            try:
                text = bytes([b]).decode(codec)
                to_uni.append(ord(text) if len(text) == 1 else REPLACEMENT)
            except UnicodeDecodeError:
                to_uni.append(REPLACEMENT)
        back = {}
        for b in range(256):
            if to_uni[b] != REPLACEMENT:
                back.setdefault(to_uni[b], b)
        pairs = sorted(back.items())
        lines.append('// %d: %s (codec %s)' % (number, name, codec))
        lines.append('inline constexpr unsigned short kToUnicode%d[256] = {\n%s\n};' % (number, rows(to_uni)))
        lines.append('inline constexpr FromUnicodePair kFromUnicode%d[%d] = {' % (number, len(pairs)))
        for i in range(0, len(pairs), 8):
            lines.append('    ' + ' '.join('{0x%04X, 0x%02X},' % p for p in pairs[i:i + 8]))
        lines.append('};')
        lines.append('')
    lines.append('inline constexpr CodeSetTable kCodeSetTables[] = {')
    for number, codec, name in CODE_SETS:
        lines.append('    {%d, "%s", kToUnicode%d, kFromUnicode%d, sizeof kFromUnicode%d / sizeof kFromUnicode%d[0]},'
                     % (number, name, number, number, number, number))
    lines.append('};\n')
    lines.append('}  // namespace ka::i18n::tables')
    with open(path, 'w', encoding='ascii', newline='\n') as f:
        f.write('\n'.join(lines) + '\n')


def main(argv):
    if len(argv) != 2:
        sys.stderr.write(__doc__)
        return 2
    out = argv[1]
    os.makedirs(out, exist_ok=True)
    version = unicodedata.unidata_version
    write_unicode(os.path.join(out, 'ka_unicode.inc'), version)
    write_codesets(os.path.join(out, 'ka_codesets.inc'), version)
    return 0


if __name__ == '__main__':
    sys.exit(main(sys.argv))
