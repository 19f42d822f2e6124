#!/usr/bin/env python3
"""Prints gbk_rows.inc: the UCS-2 character of every two-byte code of GBK (code page 936).

The 21,791 characters come from Python's gbk codec. The other valid pairs go to the private use
area the way the code page does it: three user-defined areas from U+E000 on, then the unassigned
pairs in code order. A pair that is not valid gives "?".

    python3 carddata/make_gbk_rows.py > carddata/gbk_rows.inc
"""

LEADS = range(0x81, 0xFF)
TRAILS = range(0x40, 0x100)

# Lead bytes and trail bytes of the user-defined areas, in the order of their private characters.
USER_DEFINED = (
    (range(0xAA, 0xB0), range(0xA1, 0xFF)),  # U+E000
    (range(0xF8, 0xFF), range(0xA1, 0xFF)),  # U+E234
    (range(0xA1, 0xA8), range(0x40, 0xA1)),  # U+E4C6
)


def is_valid(trail):
    return trail not in (0x7F, 0xFF)


def assigned():
    """The pairs that have a character of their own."""
    for lead in LEADS:
        for trail in filter(is_valid, TRAILS):
            try:
                yield (lead, trail), bytes((lead, trail)).decode("gbk")
            except UnicodeDecodeError:
                pass


def private(table):
    """The pairs that go to the private use area, in the order of its characters."""
    for leads, trails in USER_DEFINED:
        yield from ((lead, trail) for lead in leads for trail in filter(is_valid, trails))
    taken = set(table)
    for leads, trails in USER_DEFINED:
        taken.update((lead, trail) for lead in leads for trail in trails)
    for lead in LEADS:
        yield from ((lead, trail) for trail in filter(is_valid, TRAILS) if (lead, trail) not in taken)


def literal(character):
    """Private characters have no shape, and some others none that shows: these as escapes."""
    if character == " " or not character.isprintable():
        return "\\u%04X" % ord(character)
    return character


def main():
    table = dict(assigned())
    assert len(table) == 21791
    for number, pair in enumerate(private(table)):
        table[pair] = chr(0xE000 + number)
    assert len(table) == 23940 and len(set(table.values())) == 23940

    print("// Made by make_gbk_rows.py: a row for each lead byte from 81 on, trail bytes 40 to FF.")
    for lead in LEADS:
        print("{")
        for first in range(0x40, 0x100, 0x20):
            part = (table.get((lead, trail), "?") for trail in range(first, first + 0x20))
            print('  u"%s"  // %02X%02X' % ("".join(map(literal, part)), lead, first))
        print("},")


if __name__ == "__main__":
    main()
