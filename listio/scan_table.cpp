// The tables of the list-directed scanner: the byte classes and the transition table.
//
// The transition table is written the way its designers drew it, one text row per state:
// the entry that most classes take, then the classes that differ. It is expanded into the
// 137 x 25 array at compile time, so the source stays readable and the program pays nothing.
#include "listio/scan_table.h"

#include <array>

namespace {

constexpr std::array<uint8_t, 256> MakeCharClasses() {
    std::array<uint8_t, 256> classes{};  // class 0: every byte not named below, all above 127
    classes['!'] = 1;
    classes[' '] = classes['\t'] = 2;
    classes['\n'] = 3;
    classes[','] = 4;
    classes['/'] = 5;
    classes['+'] = classes['-'] = 7;
    classes['0'] = 8;
    for (int c = '1'; c <= '9'; ++c) classes[c] = 9;
    classes['('] = 10;
    classes['"'] = 11;
    classes['\''] = 12;
    for (int c = 'A'; c <= 'Z'; ++c) classes[c] = classes[c + 32] = 13;
    classes['_'] = 13;
    for (char c : {'D', 'E', 'Q'}) classes[static_cast<unsigned char>(c)] = classes[static_cast<unsigned char>(c + 32)] = 14;
    for (char c : {'F', 'T'}) classes[static_cast<unsigned char>(c)] = classes[static_cast<unsigned char>(c + 32)] = 15;
    classes['&'] = 16;
    classes['$'] = 17;
    classes['*'] = 18;
    classes[':'] = 19;
    classes['.'] = 20;
    classes[')'] = 21;
    classes['='] = 22;
    classes[';'] = 23;
    classes['%'] = 24;
    return classes;
}

// "default | class-list: next/action; ..." where a class list is numbers and ranges
// joined by commas, such as "4,19" or "8-9,13-15,17".
constexpr const char* kRows[kLDScanStates] = {
    "0/1",  // 0 dead state; every entry stays here
    "11/12 | 1: 1/2; 2-3: 2/0; 4: 2/3; 5: 3/4; 6: 3/5; 7: 4/6; 8: 5/0; 9: 6/7; 10: 7/8; 11-12: 8/9; 13-15: 9/10; 16-17: 10/11",  // 1 start of a value
    "1/43 | 2-3: 2/0",  // 2 after a separator or leading blanks: skip blanks
    "3/5 | 5: 3/4",  // 3 stop pending: a slash stops, anything else is end of file
    "11/12 | 2-3: 13/14; 4: 2/14; 5-6: 3/14; 8: 5/0; 9: 6/7; 18: 11/13",  // 4 start of a value, after a sign
    "11/12 | 2-3: 13/14; 4: 2/14; 5-6: 3/14; 8: 5/0; 9: 6/7; 18: 11/13",  // 5 start of a value, in leading zeros
    "11/12 | 2-3: 13/14; 4: 2/14; 5-6: 3/14; 8-9: 6/7; 18: 11/13",  // 6 start of a value, in digits
    "22/18 | 2: 7/0; 3-4,21: 0/29; 5-6: 3/29; 7: 21/15; 8: 22/0; 9: 23/15; 13: 22/17; 20: 24/15",  // 7 after "(": before the real part
    "8/40 | 3: 8/0; 6: 3/5; 11-12: 43/0",  // 8 inside a delimited text
    "0/54 | 2-3: 48/53; 8-9,13-15,17: 9/52; 10: 49/53; 22: 2/53; 24: 50/53",  // 9 namelist: in a name
    "9/56 | 14: 51/55",  // 10 namelist: after "&" or "$"
    "0/0",  // 11 landing state of actions that choose their own next state
    "11/12",  // 12 re-dispatch: the byte is treated as the start of a value of the item's type
    "1/43 | 2-3: 13/0; 4: 2/0",  // 13 behind a value: skip blanks, take one separator
    "11/12 | 2-3: 13/14; 4: 2/14; 5-6: 3/14; 8-9: 14/15; 18: 11/13",  // 14 start of a value, digits behind an overflow
    "17/16 | 2-3: 13/3; 4,19: 2/3; 5-6: 3/3; 7: 16/6; 8: 17/0; 9: 18/7; 10: 7/8",  // 15 integer value, first byte
    "17/16 | 2-3: 13/14; 4,19: 2/14; 5-6: 3/14; 8: 17/0; 9: 18/7",  // 16 integer, after a sign
    "17/16 | 2-3: 13/14; 4,19: 2/14; 5-6: 3/14; 8: 17/0; 9: 18/7",  // 17 integer, in leading zeros
    "18/16 | 2-3: 13/14; 4,19: 2/14; 5-6: 3/14; 8-9: 18/7",  // 18 integer, in digits
    "19/16 | 2-3: 13/14; 4,19: 2/14; 5-6: 3/14; 8-9: 19/0",  // 19 integer, digits behind an overflow
    "22/18 | 2-3: 13/3; 4: 2/3; 5-6: 3/3; 7: 21/15; 8: 22/0; 9: 23/15; 10: 7/8; 13: 22/17; 20: 24/15",  // 20 real value, first byte
    "22/18 | 2-3: 13/20; 4: 2/20; 5-6: 3/20; 7: 25/19; 8: 22/0; 9: 23/15; 13: 22/17; 20: 24/15",  // 21 real, after a sign
    "22/18 | 2-3: 13/20; 4: 2/20; 5-6: 3/20; 7: 25/19; 8: 22/0; 9: 23/15; 14: 26/21; 20: 24/15",  // 22 real, in leading zeros
    "23/18 | 2-3: 13/20; 4: 2/20; 5-6: 3/20; 7: 25/19; 8-9: 23/15; 14: 26/21; 20: 24/15",  // 23 real, in digits
    "24/18 | 2-3: 13/20; 4: 2/20; 5-6: 3/20; 7: 27/19; 8-9: 24/15; 14: 26/21",  // 24 real, in the fraction
    "25/18 | 2-3: 13/20; 4: 2/20; 5-6: 3/20; 8-9: 25/15",  // 25 real, in exponent digits
    "27/18 | 2-3: 13/20; 4: 2/20; 5-6: 3/20; 7: 27/15; 8: 27/0; 9: 25/15",  // 26 real, after an exponent letter
    "25/18 | 2-3: 13/20; 4: 2/20; 5-6: 3/20; 8: 27/0; 9: 25/15",  // 27 real, in leading zeros of the exponent
    "13/23 | 2: 28/22; 4,21: 13/24; 5-6: 3/24",  // 28 integer, blanks significant
    "13/26 | 2: 29/25; 4,21: 13/27; 5-6: 3/27",  // 29 real, blanks significant
    "0/28 | 2-3: 13/3; 4: 2/3; 5-6: 3/3; 10: 7/0",  // 30 complex value, first byte
    "0/29 | 1: 31/2; 2-3: 31/0; 4: 32/0",  // 31 complex, behind the real part
    "22/18 | 1: 32/2; 2-3: 32/0; 4,21: 0/29; 5-6: 3/29; 7: 21/15; 8: 22/0; 9: 23/15; 13: 22/17; 20: 24/15",  // 32 complex, behind the comma
    "0/29 | 2: 33/0; 5-6: 3/29; 21: 13/30",  // 33 complex, before ")"
    "15/32 | 15: 36/31; 20: 35/0",  // 34 integer or logical value (interchange flag), first byte
    "36/33 | 15: 36/31",  // 35 logical, after "."
    "36/0 | 2-3: 13/34; 4: 2/34; 5-6: 3/34",  // 36 logical, skipping the rest of the word
    "36/33 | 2-3: 13/3; 4: 2/3; 5-6: 3/3; 15: 36/31; 20: 35/0",  // 37 logical value, first byte
    "38/0 | 2-3: 39/0; 4: 2/36; 5-6: 3/36; 10: 1/37; 22: 40/35",  // 38 namelist: a word that is a value or the next name
    "2/38 | 2-3: 39/0; 4: 2/36; 5-6: 3/36; 22: 40/35",  // 39 the same, behind blanks
    "0/51 | 1: 40/2; 2-3: 40/0; 5: 3/50; 13-15: 9/49; 16-17: 10/11",  // 40 namelist: a name is expected
    "42/39 | 2-3: 13/3; 4: 2/3; 5-6: 3/3; 11-12: 8/9",  // 41 character value, first byte
    "42/40 | 2-3: 13/41; 4: 2/41; 5-6: 3/41",  // 42 undelimited text
    "1/42 | 2-3: 13/41; 4,23: 2/41; 5-6: 3/41; 11-12: 8/40",  // 43 behind a closing delimiter
    "42/39 | 2-3: 13/3; 4: 2/3; 5-6: 3/3",  // 44 character value that cannot begin with a delimiter
    "45/0 | 2-3: 13/3; 4: 2/3; 5-6: 3/3",  // 45 skipping undelimited text after its report
    "46/45 | 2-3: 46/0; 6: 46/5; 16-17: 47/44",  // 46 namelist: searching the group opener
    "0/48 | 2-3: 40/47; 6: 3/5; 8-9,13-15,17: 47/46",  // 47 namelist: comparing the group name
    "0/60 | 2-3: 48/0; 22: 2/59",  // 48 namelist: behind a name, in blanks
    "15/32",  // 49 namelist: first byte of a subscript
    "0/63 | 2-3: 0/62; 5: 3/62; 6: 3/0; 8-9,13-15,17: 57/49",  // 50 namelist: after "%"
    "9/56 | 13: 52/57",  // 51 namelist: "&E" seen
    "9/56 | 14: 53/58",  // 52 namelist: "&EN" seen
    "9/56 | 2-3: 3/50",  // 53 namelist: "&END" seen
    "11/12",  // 54 as 11 with a report of the byte
    "40/61 | 2-3: 55/0; 4: 56/0",  // 55 namelist: behind a value list, skip blanks
    "40/61 | 2-3: 56/0",  // 56 namelist: the same, behind a comma
    "0/63 | 2-3: 48/53; 5-6: 3/53; 8-9,13-15,17: 57/52; 10: 49/53; 22: 2/53; 24: 50/53",  // 57 namelist: in a component name
    "48/65 | 4,19: 49/64",  // 58 namelist: behind a subscript value
    "48/67 | 10: 49/66; 24: 50/66",  // 59 namelist: behind ")" of a subscript list
    "11/12 | 1: 60/2; 2-3: 61/0; 5: 3/4; 6: 3/5; 7: 62/6; 8: 63/0; 9: 64/7; 10: 65/8; 11-12: 66/9; 13-15: 67/10; 16-17: 68/11; 23: 61/3",  // 60 twin of 1
    "60/43 | 2-3: 61/0",  // 61 twin of 2
    "11/12 | 2-3: 69/14; 5-6: 3/14; 8: 63/0; 9: 64/7; 18: 11/13; 23: 61/14",  // 62 twin of 4
    "11/12 | 2-3: 69/14; 5-6: 3/14; 8: 63/0; 9: 64/7; 18: 11/13; 23: 61/14",  // 63 twin of 5
    "11/12 | 2-3: 69/14; 5-6: 3/14; 8-9: 64/7; 18: 11/13; 23: 61/14",  // 64 twin of 6
    "78/18 | 2: 65/0; 3,21,23: 0/29; 4: 80/15; 5-6: 3/29; 7: 77/15; 8: 78/0; 9: 79/15; 13: 22/17",  // 65 twin of 7
    "66/40 | 3: 66/0; 6: 3/5; 11-12: 99/0",  // 66 twin of 8
    "0/54 | 2-3: 104/53; 8-9,13-15,17: 67/52; 10: 105/53; 22: 61/53; 24: 106/53",  // 67 twin of 9
    "67/56 | 14: 107/55",  // 68 twin of 10
    "60/43 | 2-3: 69/0; 23: 61/0",  // 69 twin of 13
    "11/12 | 2-3: 69/14; 5-6: 3/14; 8-9: 70/15; 18: 11/13; 23: 61/14",  // 70 twin of 14
    "73/16 | 2-3: 69/3; 4,19,23: 61/3; 5-6: 3/3; 7: 72/6; 8: 73/0; 9: 74/7; 10: 7/8",  // 71 twin of 15
    "73/16 | 2-3: 69/14; 4,19,23: 61/14; 5-6: 3/14; 8: 73/0; 9: 74/7",  // 72 twin of 16
    "73/16 | 2-3: 69/14; 4,19,23: 61/14; 5-6: 3/14; 8: 73/0; 9: 74/7",  // 73 twin of 17
    "74/16 | 2-3: 69/14; 4,19,23: 61/14; 5-6: 3/14; 8-9: 74/7",  // 74 twin of 18
    "75/16 | 2-3: 69/14; 4,19,23: 61/14; 5-6: 3/14; 8-9: 75/0",  // 75 twin of 19
    "78/18 | 2-3: 69/3; 4: 80/15; 5-6: 3/3; 7: 77/15; 8: 78/0; 9: 79/15; 10: 65/8; 13: 78/17; 23: 61/3",  // 76 twin of 20
    "78/18 | 2-3: 69/20; 4: 80/15; 5-6: 3/20; 7: 81/19; 8: 78/0; 9: 79/15; 13: 78/17; 23: 61/20",  // 77 twin of 21
    "78/18 | 2-3: 69/20; 4: 80/15; 5-6: 3/20; 7: 81/19; 8: 78/0; 9: 79/15; 14: 82/21; 23: 61/20",  // 78 twin of 22
    "79/18 | 2-3: 69/20; 4: 80/15; 5-6: 3/20; 7: 81/19; 8-9: 79/15; 14: 82/21; 23: 61/20",  // 79 twin of 23
    "80/18 | 2-3: 69/20; 5-6: 3/20; 7: 83/19; 8-9: 80/15; 14: 82/21; 23: 61/20",  // 80 twin of 24
    "81/18 | 2-3: 69/20; 5-6: 3/20; 8-9: 81/15; 23: 61/20",  // 81 twin of 25
    "83/18 | 2-3: 69/20; 5-6: 3/20; 7: 83/15; 8: 83/0; 9: 81/15; 23: 61/20",  // 82 twin of 26
    "81/18 | 2-3: 69/20; 5-6: 3/20; 8: 83/0; 9: 81/15; 23: 61/20",  // 83 twin of 27
    "69/23 | 2: 84/22; 5-6: 3/24; 21,23: 69/24",  // 84 twin of 28
    "69/26 | 2: 85/25; 5-6: 3/27; 21,23: 69/27",  // 85 twin of 29
    "0/28 | 2-3: 69/3; 5-6: 3/3; 10: 65/0; 23: 61/3",  // 86 twin of 30
    "0/29 | 1: 87/2; 2-3: 87/0; 23: 88/0",  // 87 twin of 31
    "78/18 | 1: 88/2; 2-3: 88/0; 4: 80/15; 5-6: 3/29; 7: 77/15; 8: 78/0; 9: 79/15; 13: 22/17; 21,23: 0/29",  // 88 twin of 32
    "0/29 | 2: 89/0; 5-6: 3/29; 21: 69/30",  // 89 twin of 33
    "71/32 | 15: 92/31; 20: 91/0",  // 90 twin of 34
    "92/33 | 15: 92/31",  // 91 twin of 35
    "92/0 | 2-3: 69/34; 5-6: 3/34; 23: 61/34",  // 92 twin of 36
    "92/33 | 2-3: 69/3; 5-6: 3/3; 15: 92/31; 20: 91/0; 23: 61/3",  // 93 twin of 37
    "94/0 | 2-3: 95/0; 5-6: 3/36; 22: 96/35; 23: 61/36",  // 94 twin of 38
    "61/38 | 2-3: 95/0; 5-6: 3/36; 22: 96/35; 23: 61/36",  // 95 twin of 39
    "0/51 | 1: 96/2; 2-3: 96/0; 5: 3/50; 13-15: 67/49; 16-17: 68/11",  // 96 twin of 40
    "98/39 | 2-3: 69/3; 5-6: 3/3; 11-12: 66/9; 23: 61/3",  // 97 twin of 41
    "98/40 | 2-3: 69/41; 5-6: 3/41; 23: 61/41",  // 98 twin of 42
    "60/42 | 2-3: 69/41; 5-6: 3/41; 11-12: 8/40; 23: 61/41",  // 99 twin of 43
    "98/39 | 2-3: 69/3; 5-6: 3/3; 23: 61/3",  // 100 twin of 44
    "101/0 | 2-3: 69/3; 5-6: 3/3; 23: 61/3",  // 101 twin of 45
    "102/45 | 2-3: 102/0; 6: 102/5; 16-17: 103/44",  // 102 twin of 46
    "0/48 | 2-3: 96/47; 6: 3/5; 8-9,13-15,17: 103/46",  // 103 twin of 47
    "0/60 | 2-3: 104/0; 22: 61/59",  // 104 twin of 48
    "71/32",  // 105 twin of 49
    "0/63 | 2-3: 0/62; 5: 3/62; 6: 3/0; 8-9,13-15,17: 112/49",  // 106 twin of 50
    "67/56 | 13: 108/57",  // 107 twin of 51
    "67/56 | 14: 109/58",  // 108 twin of 52
    "67/56 | 2-3: 3/50",  // 109 twin of 53
    "96/61 | 2-3: 110/0; 23: 111/0",  // 110 twin of 55
    "96/61 | 2-3: 111/0",  // 111 twin of 56
    "0/63 | 2-3: 104/53; 5-6: 3/53; 8-9,13-15,17: 112/52; 10: 105/53; 22: 61/53; 24: 106/53",  // 112 twin of 57
    "104/65 | 4,19: 105/64",  // 113 twin of 58
    "104/67 | 10: 105/66; 24: 106/66",  // 114 twin of 59
    "0/68 | 2-3: 13/20; 4: 2/20; 5-6: 3/20",  // 115 NaN or infinity complete
    "0/68 | 2-3: 69/20; 5-6: 3/20; 23: 61/20",  // 116 twin of 115
    "0/68 | 13: 118/69",  // 117 "N" seen
    "0/68 | 13: 119/70",  // 118 "NA" seen
    "0/68 | 2-3: 13/20; 4: 2/20; 5-6: 3/20; 10: 120/0; 13: 115/72; 14: 115/71",  // 119 "NAN" seen
    "0/68 | 8-9,14-15: 123/0; 13: 122/73; 21: 115/74",  // 120 "NAN(" seen
    "0/68 | 2-3: 69/20; 5-6: 3/20; 10: 120/0; 13: 116/72; 14: 116/71; 23: 61/20",  // 121 twin of 119
    "0/68 | 8-9,13-15: 123/0; 21: 115/74",  // 122 "NAN(S" seen
    "0/68 | 8-9,13-15: 123/0; 21: 115/74",  // 123 in the text of "NAN(...)"
    "0/68 | 13: 125/75",  // 124 "I" seen
    "0/68 | 15: 126/76",  // 125 "IN" seen
    "0/68 | 2-3: 13/20; 4: 2/20; 5-6: 3/20; 13: 127/77",  // 126 "INF" seen
    "0/68 | 13: 129/75",  // 127 "INFI" seen
    "0/68 | 2-3: 69/20; 5-6: 3/20; 13: 127/77; 23: 61/20",  // 128 twin of 126
    "0/68 | 13: 130/77",  // 129 "INFIN" seen
    "0/68 | 15: 131/78",  // 130 "INFINI" seen
    "0/68 | 13: 115/79",  // 131 "INFINIT" seen
    "132/80 | 2-3: 132/0; 4: 133/0",  // 132 before a child statement on an array element: skip blanks and one comma
    "135/80 | 2-3: 133/0",  // 133 before a child statement: skip blanks, then stop with the byte kept
    "134/80 | 2-3: 134/0; 23: 133/0",  // 134 twin of 132 with ";" as the separator
    "0/0",  // 135 dead state behind 133
    "0/60 | 2-3: 136/0; 22: 133/59",  // 136 before a child statement in a namelist: skip blanks and "="
};

struct RowReader {
    const char* at;

    constexpr bool AtEnd() const { return *at == '\0'; }
    constexpr void SkipBlanks() {
        while (*at == ' ') ++at;
    }
    constexpr bool Take(char c) {
        SkipBlanks();
        if (*at != c) return false;
        ++at;
        return true;
    }
    constexpr uint32_t Number() {
        SkipBlanks();
        uint32_t value = 0;
        while (*at >= '0' && *at <= '9') value = value * 10 + static_cast<uint32_t>(*at++ - '0');
        return value;
    }
};

constexpr LDScanTable BuildTable() {
    LDScanTable table{};
    for (int state = 0; state < kLDScanStates; ++state) {
        RowReader row{kRows[state]};
        uint32_t next = row.Number();
        row.Take('/');
        uint32_t action = row.Number();
        for (auto& entry : table.rows[state]) entry = LDTransition{next, action};
        if (!row.Take('|')) continue;
        while (!row.AtEnd()) {
            // Collect the classes of one group, then its entry.
            bool classes[kLDScanClasses]{};
            do {
                uint32_t first = row.Number();
                uint32_t last = row.Take('-') ? row.Number() : first;
                for (uint32_t c = first; c <= last; ++c) classes[c] = true;
            } while (row.Take(','));
            row.Take(':');
            uint32_t groupNext = row.Number();
            row.Take('/');
            uint32_t groupAction = row.Number();
            for (int c = 0; c < kLDScanClasses; ++c) {
                if (classes[c]) table.rows[state][c] = LDTransition{groupNext, groupAction};
            }
            row.Take(';');
            row.SkipBlanks();
        }
    }
    return table;
}

constexpr LDScanTable kTable = BuildTable();

// The states in which every digit leads back to the state itself with one action: a run
// of digits there can be taken at once.
constexpr std::array<uint8_t, kLDScanStates> FindDigitRuns() {
    std::array<uint8_t, kLDScanStates> runs{};
    for (int state = 0; state < kLDScanStates; ++state) {
        const LDTransition& zero = kTable.rows[state][8];
        const LDTransition& other = kTable.rows[state][9];
        bool loop = zero.next == static_cast<uint32_t>(state) && other.next == zero.next && other.action == zero.action;
        if (loop && (zero.action == 7 || zero.action == 15)) runs[state] = static_cast<uint8_t>(zero.action);
    }
    return runs;
}

}  // namespace

constinit const std::array<uint8_t, 256> _LDCharClass = MakeCharClasses();
constinit const LDScanTable _ldscan_transition = kTable;
constinit const std::array<uint8_t, kLDScanStates> kLDDigitRunAction = FindDigitRuns();
