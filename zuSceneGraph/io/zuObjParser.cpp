#include <zuSceneGraph/io/zuObjParser.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>

namespace zu {

namespace {

inline bool isSpace(char c)
{
    return c == ' ' || c == '\t';
}

inline bool isDelimiter(char c)
{
    return c == ' ' || c == '\t' || c == '#';
}

inline bool isDigit(char c)
{
    return static_cast<unsigned>(c - '0') < 10u;
}

// Adds the run of digits at q to `value` (value × 10^n + digits) and returns where the run
// ends. Runs longer than 19 digits overflow `value`; the callers refuse or re-read those.
// (Taking eight digits at once in a 64-bit word was measured slower: the runs of an OBJ file
// are short.)
inline const char* readDigits(const char* q, const char* end, uint64_t& value)
{
    while (q < end && isDigit(*q))
        value = value * 10 + static_cast<unsigned>(*q++ - '0');
    return q;
}

inline const char* skipSpaces(const char* p, const char* end)
{
    while (p < end && isSpace(*p))
        ++p;
    return p;
}

inline const char* tokenEnd(const char* p, const char* end)
{
    while (p < end && !isDelimiter(*p))
        ++p;
    return p;
}

// The token at p, quoted and cut to a readable length, for messages.
std::string quoted(const char* p, const char* end)
{
    const size_t length = static_cast<size_t>(tokenEnd(p, end) - p);
    std::string text(1, '"');
    text.append(p, length < 40 ? length : 40);
    text.append(length > 40 ? "...\"" : "\"");
    return text;
}

// The value of the seven digits of "d.dddddd" (the shape most writers print) in the eight
// bytes `word` holds in text order, or -1 when they are not that. The point is replaced by
// the digit before it and a '0' leads, so that the eight bytes are digits; a byte is a digit
// when its upper half is 3 and stays 3 once 6 is added. They are then combined in pairs,
// quads and halves.
inline int64_t fixedPointDigits(uint64_t word)
{
    constexpr uint64_t HIGH = 0xF0F0F0F0F0F0F0F0ull;
    constexpr uint64_t ZEROS = 0x3030303030303030ull;
    if (((word >> 8) & 0xFF) != '.')
        return -1;
    uint64_t digits = ((word & 0xFF) << 8) | (word & 0xFFFFFFFFFFFF0000ull) | '0';
    if ((digits & HIGH) != ZEROS || ((digits + 0x0606060606060606ull) & HIGH) != ZEROS)
        return -1;
    digits -= ZEROS;
    digits = digits * 10 + (digits >> 8);
    digits = ((digits & 0x000000FF000000FFull) * (100 + (1000000ull << 32)) +
              ((digits >> 16) & 0x000000FF000000FFull) * (1 + (10000ull << 32))) >> 32;
    return static_cast<int64_t>(digits);
}

constexpr double POWERS_OF_TEN[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The general case: the standard parser over the whole token. A leading '+' (which it does
// not take) is skipped; infinities and NaNs are refused; a number too small for a float
// becomes a signed zero or a subnormal, one too large is refused.
bool parseFloatSlow(const char* p, const char* end, float& value)
{
    if (p < end && *p == '+') {
        ++p;
        if (p < end && *p == '-')
            return false;
    }
    float result = 0.0f;
    const auto [stop, error] = std::from_chars(p, end, result, std::chars_format::general);
    if (stop != end)
        return false;
    if (error == std::errc::result_out_of_range) {
        double wide = 0.0;
        const auto [wideStop, wideError] = std::from_chars(p, end, wide, std::chars_format::general);
        if (wideStop != end || wideError != std::errc() || !(std::fabs(wide) < 1.0))
            return false;
        result = static_cast<float>(wide);
    } else if (error != std::errc() || !std::isfinite(result)) {
        return false;
    }
    value = result;
    return true;
}

// "d.dddddd" with an optional sign, correctly rounded (as zuObjParser::ParseFloat), inlined
// into the number loop; false, with `p` unchanged, for every other token.
inline bool parseFixedPoint(const char*& p, const char* end, float& value)
{
    if constexpr (std::endian::native == std::endian::little) {
        const bool negative = p < end && *p == '-';
        const char* q = p < end && (*p == '-' || *p == '+') ? p + 1 : p;
        if (end - q < 8 || (end - q > 8 && !isDelimiter(q[8])))
            return false;
        uint64_t word;
        std::memcpy(&word, q, sizeof(word));
        const int64_t fixed = fixedPointDigits(word);
        if (fixed < 0)
            return false;
        // A mantissa below 2^53 divided by an exact power of ten is correctly rounded;
        // rounding that double to a float is too unless it lies halfway between two floats.
        const double wide = static_cast<double>(fixed) / 1e6;
        uint64_t bits;
        std::memcpy(&bits, &wide, sizeof(bits));
        if ((bits & 0x1FFFFFFFu) == 0x10000000u)
            return false;
        const float narrow = static_cast<float>(wide);
        value = negative ? -narrow : narrow;
        p = q + 8;
        return true;
    } else {
        return false;
    }
}

// Every other shape of number ParseFloat takes; false, with `p` unchanged, for a bad token.
bool parseFloatGeneral(const char*& p, const char* end, float& value)
{
    // The fast path takes the usual shapes ("-0.123456", "12.5e-3") with at most 19 digits.
    // A mantissa of at most 2^53 scaled by an exact power of ten is one correctly rounded
    // double operation; rounding that double to a float is then correct unless the double
    // lies exactly halfway between two floats, which goes to the slow path.
    const char* q = p;
    const bool negative = q < end && *q == '-';
    if (q < end && (*q == '-' || *q == '+'))
        ++q;
    uint64_t mantissa = 0;
    const char* digits = q;
    q = readDigits(q, end, mantissa);
    ptrdiff_t count = q - digits;
    int exponent = 0;
    if (q < end && *q == '.') {
        const char* fraction = ++q;
        q = readDigits(q, end, mantissa);
        exponent = -static_cast<int>(q - fraction);
        count += q - fraction;
    }
    bool fast = count > 0 && count <= 19;
    if (fast && q < end && (*q | 0x20) == 'e') {
        const char* e = q + 1;
        const bool negativeExponent = e < end && *e == '-';
        if (e < end && (*e == '-' || *e == '+'))
            ++e;
        const char* first = e;
        int written = 0;
        while (e < end && isDigit(*e) && e - first < 6)
            written = written * 10 + (*e++ - '0');
        fast = e > first && (e == end || !isDigit(*e));  // "1e" and huge exponents: the slow path
        exponent += negativeExponent ? -written : written;
        q = e;
    }
    if (fast && (q == end || isDelimiter(*q))) {
        if (mantissa == 0) {
            value = negative ? -0.0f : 0.0f;
            p = q;
            return true;
        }
        if (mantissa <= (uint64_t(1) << 53) && exponent >= -22 && exponent <= 22) {
            const double wide = exponent < 0 ? static_cast<double>(mantissa) / POWERS_OF_TEN[-exponent]
                                             : static_cast<double>(mantissa) * POWERS_OF_TEN[exponent];
            uint64_t bits;
            std::memcpy(&bits, &wide, sizeof(bits));
            if (wide >= static_cast<double>(FLT_MIN) && (bits & 0x1FFFFFFFu) != 0x10000000u) {
                const float narrow = static_cast<float>(wide);
                value = negative ? -narrow : narrow;
                p = q;
                return true;
            }
        }
    }
    const char* stop = tokenEnd(p, end);
    if (stop == p || !parseFloatSlow(p, stop, value))
        return false;
    p = stop;
    return true;
}

// A positive index as written (1-based) or a negative (relative) one; 0 and numbers beyond
// 32 bits are refused.
inline bool parseIndex(const char*& p, const char* end, int32_t& index)
{
    const char* q = p;
    const bool negative = q < end && *q == '-';
    if (q < end && (*q == '-' || *q == '+'))
        ++q;
    const char* first = q;
    uint64_t value = 0;
    q = readDigits(q, end, value);
    if (q == first || q - first > 10 || value == 0 || value > INT32_MAX)
        return false;
    index = negative ? -static_cast<int32_t>(value) : static_cast<int32_t>(value);
    p = q;
    return true;
}

// Up to `capacity` numbers of a statement; reports the first bad one. Returns how many
// tokens there were (a bad token counts, as 0).
int parseNumbers(const char* p, const char* end, float* values, int capacity, uint32_t line, const char* keyword,
                 zuObjParser::Chunk& chunk)
{
    int count = 0;
    bool reported = false;
    p = skipSpaces(p, end);
    while (p < end && *p != '#') {
        float value = 0.0f;
        if (!parseFixedPoint(p, end, value) && !parseFloatGeneral(p, end, value)) {
            if (!reported)
                chunk.errors.push_back({line, "bad number " + quoted(p, end) + " in a " + keyword + " statement"});
            reported = true;
            p = tokenEnd(p, end);
        }
        if (count < capacity)
            values[count] = value;
        ++count;
        p = skipSpaces(p, end);
    }
    return count;
}

// Exactly `count` numbers of the "d.dddddd" shape, each after spaces or tabs, and nothing
// after them: the vertex statements most files have, without the general loop's counting and
// reporting. False, with nothing read, for anything else.
inline bool readFixedPoints(const char* p, const char* end, float* values, int count)
{
    for (int i = 0; i < count; ++i) {
        if (p == end || !isSpace(*p))
            return false;
        p = skipSpaces(p, end);
        if (!parseFixedPoint(p, end, values[i]))
            return false;
    }
    return p == end;
}

// The rest of a line as a name: spaces around it and a comment after it are dropped.
std::string restAsName(const char* p, const char* end)
{
    p = skipSpaces(p, end);
    const char* stop = p;
    for (const char* q = p; q < end; ++q) {
        if (*q == '#' && (q == p || isSpace(q[-1])))
            break;
        if (!isSpace(*q))
            stop = q + 1;
    }
    return std::string(p, stop);
}

bool keywordIs(const char* word, size_t length, const char* keyword)
{
    return std::strlen(keyword) == length && std::memcmp(word, keyword, length) == 0;
}

// Statements of free-form geometry, display and rendering attributes: valid OBJ that a
// mesh does not use.
bool isSkippedKeyword(const char* word, size_t length)
{
    static const char* const SKIPPED[] = {"s",     "vp",   "cstype",   "deg",        "bmat",      "step",   "curv",
                                          "curv2", "surf", "parm",     "trim",       "hole",      "scrv",   "sp",
                                          "end",   "con",  "mg",       "bevel",      "c_interp",  "d_interp", "lod",
                                          "usemap", "maplib", "shadow_obj", "trace_obj", "ctech", "stech", "call",
                                          "csh"};
    for (const char* keyword : SKIPPED)
        if (keywordIs(word, length, keyword))
            return true;
    return false;
}

// A few values one by one: cheaper than a range insert, which is not inlined.
template <class T>
inline void appendValues(std::vector<T>& array, const T* values, int count)
{
    for (int i = 0; i < count; ++i)
        array.push_back(values[i]);
}

// The largest index of each kind of an element and its smallest, as written.
struct Extent {
    int32_t highest[3] = {0, 0, 0};
    int32_t lowest = 0;
};

// A corner as the chunk keeps it: each index less one (see Chunk::corners). `positive`:
// no index is negative.
inline void appendCorner(std::vector<int32_t>& corners, const int32_t* corner, Extent& extent, bool positive)
{
    for (int k = 0; k < 3; ++k) {
        extent.highest[k] = std::max(extent.highest[k], corner[k]);
        if (!positive)
            extent.lowest = std::min(extent.lowest, corner[k]);
    }
    for (int k = 0; k < 3; ++k)
        corners.push_back(corner[k] - 1);
}

void addVertex(const char* p, const char* end, uint32_t line, zuObjParser::Chunk& chunk)
{
    float values[7] = {0, 0, 0, 0, 0, 0, 0};
    const int count = readFixedPoints(p, end, values, 3) ? 3 : parseNumbers(p, end, values, 7, line, "v", chunk);
    if (count < 3 || count == 5 || count > 7)
        chunk.errors.push_back({line, "a v statement takes x y z, an optional w or a colour (r g b or r g b a); found " +
                                          std::to_string(count) + " numbers"});
    appendValues(chunk.positions, values, 3);
    const bool colored = count == 6 || count == 7;
    if (colored && chunk.colors.empty())
        chunk.colors.assign((chunk.positions.size() / 3 - 1) * 4, 1.0f);
    if (colored) {
        chunk.colors.insert(chunk.colors.end(), values + 3, values + 6);
        chunk.colors.push_back(count == 7 ? values[6] : 1.0f);
        chunk.hasAlpha |= count == 7;
    } else if (!chunk.colors.empty()) {
        chunk.colors.insert(chunk.colors.end(), 4, 1.0f);
    }
}

void addTexCoord(const char* p, const char* end, uint32_t line, zuObjParser::Chunk& chunk)
{
    float values[3] = {0, 0, 0};
    const int count = readFixedPoints(p, end, values, 2) ? 2 : parseNumbers(p, end, values, 3, line, "vt", chunk);
    if (count < 1 || count > 3)
        chunk.errors.push_back(
            {line, "a vt statement takes u [v [w]]; found " + std::to_string(count) + " numbers"});
    appendValues(chunk.texCoords, values, 2);
}

void addNormal(const char* p, const char* end, uint32_t line, zuObjParser::Chunk& chunk)
{
    float values[3] = {0, 0, 0};
    const int count = readFixedPoints(p, end, values, 3) ? 3 : parseNumbers(p, end, values, 3, line, "vn", chunk);
    if (count != 3)
        chunk.errors.push_back({line, "a vn statement takes x y z; found " + std::to_string(count) + " numbers"});
    appendValues(chunk.normals, values, 3);
}

// A positive index of at most nine digits, its end found by the byte after it not being a
// digit (no bound to check). Where four digits lead (the indices of a large file have 5 to
// 7), they are taken in one 32-bit word.
inline bool readPlainIndex(const char*& p, const char* end, int32_t& index)
{
    const char* q = p;
    uint32_t value = 0;
    if constexpr (std::endian::native == std::endian::little) {
        if (end - q >= 4) {
            uint32_t word;
            std::memcpy(&word, q, sizeof(word));
            // Every byte a digit: its upper half 3, and still 3 once 6 is added to it.
            if ((word & 0xF0F0F0F0u) == 0x30303030u && ((word + 0x06060606u) & 0xF0F0F0F0u) == 0x30303030u) {
                const uint32_t pairs = (word - 0x30303030u) * 10 + ((word - 0x30303030u) >> 8);
                value = (pairs & 0xFF) * 100 + ((pairs >> 16) & 0xFF);
                q += 4;
            }
        }
    }
    unsigned digit;
    while ((digit = static_cast<unsigned char>(*q) - unsigned('0')) <= 9 && q - p < 9) {
        value = value * 10 + digit;
        ++q;
    }
    if (digit <= 9 || value == 0)
        return false;
    index = static_cast<int32_t>(value);
    p = q;
    return true;
}

// The corners of an element in the shape nearly every file has (positive indices, corners
// v, v/vt, v//vn or v/vt/vn separated by spaces or tabs), read without the general loop's
// bound and sign checks: the byte at `end` must be readable and not a digit. Appends them and
// returns how many; 0, with nothing appended, for any other shape, which the general loop
// then reads and reports on.
uint32_t readPlainCorners(const char* p, const char* end, std::vector<int32_t>& corners, Extent& extent)
{
    const size_t first = corners.size();
    uint32_t count = 0;
    Extent local;  // not `extent`, which the corners' stores could alias
    p = skipSpaces(p, end);
    while (p < end) {
        int32_t corner[3] = {0, 0, 0};
        bool ok = readPlainIndex(p, end, corner[0]);
        if (ok && p < end && *p == '/') {
            ++p;
            if (p < end && *p == '/')
                ok = readPlainIndex(++p, end, corner[2]);
            else if ((ok = readPlainIndex(p, end, corner[1])) && p < end && *p == '/')
                ok = readPlainIndex(++p, end, corner[2]);
        }
        if (!ok || (p < end && !isSpace(*p))) {
            corners.resize(first);
            return 0;
        }
        appendCorner(corners, corner, local, true);
        ++count;
        p = skipSpaces(p, end);
    }
    extent = local;
    return count;
}

// A face, line or point statement. A bad corner drops the whole statement. `terminated`:
// the byte at `end` is readable and not a digit.
void addElement(const char* p, const char* end, bool terminated, uint32_t line, zuObjParser::ElementKind kind,
                const char* keyword, zuObjParser::Chunk& chunk)
{
    const size_t first = chunk.corners.size();
    Extent extent;
    uint32_t count = terminated ? readPlainCorners(p, end, chunk.corners, extent) : 0;
    p = count > 0 ? end : skipSpaces(p, end);
    while (p < end && *p != '#') {
        const char* token = p;
        int32_t corner[3] = {0, 0, 0};
        bool ok = parseIndex(p, end, corner[0]);
        if (ok && p < end && *p == '/') {
            ++p;
            if (p < end && *p != '/' && !isDelimiter(*p))
                ok = parseIndex(p, end, corner[1]);
            if (ok && p < end && *p == '/') {
                ++p;
                ok = parseIndex(p, end, corner[2]);
            }
        }
        if (!ok || (p < end && !isDelimiter(*p))) {
            chunk.corners.resize(first);
            chunk.errors.push_back({line, "bad index " + quoted(token, end) + " in an " + keyword +
                                              " statement; the statement is dropped"});
            return;
        }
        appendCorner(chunk.corners, corner, extent, false);
        ++count;
        p = skipSpaces(p, end);
    }
    const uint32_t least = kind == zuObjParser::FACE ? 3 : kind == zuObjParser::LINE ? 2 : 1;
    if (count < least) {
        chunk.corners.resize(first);
        chunk.errors.push_back({line, std::string("an ") + keyword + " statement needs at least " +
                                          std::to_string(least) + (least == 1 ? " index" : " indices") +
                                          "; the statement is dropped"});
        return;
    }
    const int32_t above[3] = {static_cast<int32_t>(chunk.positions.size() / 3),
                              static_cast<int32_t>(chunk.texCoords.size() / 2),
                              static_cast<int32_t>(chunk.normals.size() / 3)};
    chunk.elements.push_back({static_cast<uint32_t>(first / 3), count, line, kind, above[0], above[1], above[2]});
    chunk.relative |= extent.lowest < 0;
    for (int k = 0; k < 3; ++k)
        chunk.reach[k] = std::max(chunk.reach[k], int64_t(extent.highest[k]) - 1 - above[k]);
}

void addStatement(zuObjParser::StatementKind kind, const char* p, const char* end, uint32_t line,
                  zuObjParser::Chunk& chunk)
{
    chunk.statements.push_back({kind, static_cast<uint32_t>(chunk.elements.size()), line, restAsName(p, end)});
}

void parseLine(const char* p, const char* end, bool terminated, uint32_t line, zuObjParser::Chunk& chunk)
{
    p = skipSpaces(p, end);
    if (p == end || *p == '#')
        return;
    const char* word = p;
    while (p < end && !isSpace(*p))
        ++p;
    const size_t length = static_cast<size_t>(p - word);
    if (length == 1) {
        switch (word[0]) {
        case 'v': return addVertex(p, end, line, chunk);
        case 'f': return addElement(p, end, terminated, line, zuObjParser::FACE, "f", chunk);
        case 'l': return addElement(p, end, terminated, line, zuObjParser::LINE, "l", chunk);
        case 'p': return addElement(p, end, terminated, line, zuObjParser::POINT, "p", chunk);
        case 'g': return addStatement(zuObjParser::GROUP, p, end, line, chunk);
        case 'o': return addStatement(zuObjParser::OBJECT, p, end, line, chunk);
        default: break;
        }
    } else if (length == 2 && word[0] == 'v' && word[1] == 't') {
        return addTexCoord(p, end, line, chunk);
    } else if (length == 2 && word[0] == 'v' && word[1] == 'n') {
        return addNormal(p, end, line, chunk);
    } else if (keywordIs(word, length, "usemtl")) {
        return addStatement(zuObjParser::USE_MATERIAL, p, end, line, chunk);
    } else if (keywordIs(word, length, "mtllib")) {
        return addStatement(zuObjParser::MATERIAL_LIBRARY, p, end, line, chunk);
    }
    if (!isSkippedKeyword(word, length))
        chunk.errors.push_back({line, "unknown statement " + quoted(word, end) + "; the line is skipped"});
}

} // namespace

void zuObjParser::Chunk::clear()
{
    positions.clear();
    colors.clear();
    texCoords.clear();
    normals.clear();
    corners.clear();
    elements.clear();
    statements.clear();
    errors.clear();
    lineCount = 0;
    hasAlpha = false;
    relative = false;
    std::fill(std::begin(reach), std::end(reach), INT64_MIN);
}

bool zuObjParser::ParseFloat(const char*& p, const char* end, float& value)
{
    return parseFixedPoint(p, end, value) || parseFloatGeneral(p, end, value);
}

size_t zuObjParser::WholeLinesLength(const char* text, size_t size)
{
    for (size_t i = size; i > 0; --i) {
        if (text[i - 1] != '\n')
            continue;
        size_t last = i - 1;
        if (last > 0 && text[last - 1] == '\r')
            --last;
        if (last == 0 || text[last - 1] != '\\')
            return i;
    }
    return 0;
}

void zuObjParser::Parse(const char* text, size_t size, Chunk& chunk)
{
    chunk.clear();
    // A line ends before its line end, or at the end of the text, or is a joined line held in
    // a string (which ends with a null character): only the last is not followed by a byte.
    const char* const textEnd = text + size;
    chunk.lineCount = ForEachLine(text, size, [&chunk, textEnd](const char* begin, const char* end, uint32_t line) {
        parseLine(begin, end, end != textEnd, line, chunk);
    });
}

} // namespace zu
