#pragma once

#include <cstddef>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace zu {

// Turns a run of whole OBJ text lines into plain arrays: the numbers of the vertex
// statements, the indices of the faces, lines and points as written, and the statements
// that change the group, the object, the material or name a material library. It resolves
// nothing against the rest of the file, so that the chunks of a large file can be parsed on
// several threads at once and merged in order afterwards (zuObjReader does that).
//
// The parser keeps no state between calls and allocates only when a chunk's arrays grow
// beyond what they held before: a chunk reused for the next run of text keeps its capacity.
//
// What it accepts: `v x y z` with an optional w (ignored) or a colour after x y z (r g b, or
// r g b a), `vt u [v [w]]`, `vn x y z`, `f` in the four corner forms (v, v/vt, v//vn,
// v/vt/vn) with positive or negative indices, `l` and `p`, `g`, `o`, `usemtl`, `mtllib`;
// `s` and the statements of free-form geometry and display attributes are skipped. Lines
// end with LF or CRLF, a backslash before the line end joins the next line, `#` starts a
// comment, spaces and tabs separate, and the last line needs no line end.
class zuObjParser {
public:
    enum ElementKind : uint8_t { FACE, LINE, POINT };
    enum StatementKind : uint8_t { GROUP, OBJECT, USE_MATERIAL, MATERIAL_LIBRARY };

    // A face, line or point statement: its corners in `corners`, and the number of vertex
    // statements of each kind above it in the chunk, against which negative indices count.
    struct Element {
        uint32_t firstCorner;
        uint32_t cornerCount;
        uint32_t line;
        ElementKind kind;
        int32_t positionCount;
        int32_t texCoordCount;
        int32_t normalCount;
    };
    // A statement that applies from element `element` on (the number of elements above it).
    struct Statement {
        StatementKind kind;
        uint32_t element;
        uint32_t line;
        std::string name;
    };
    // A line the parser could not take, or took in part.
    struct Error {
        uint32_t line;
        std::string text;
    };

    struct Chunk {
        std::vector<float> positions;  // x y z per vertex statement
        std::vector<float> colors;     // r g b a per vertex statement, or empty when none has one
        std::vector<float> texCoords;  // u v
        std::vector<float> normals;    // x y z
        // v vt vn per corner, each as written less one: a positive index becomes the 0-based
        // one, an absent one -1, a negative one stays below -1.
        std::vector<int32_t> corners;
        std::vector<Element> elements;
        std::vector<Statement> statements;
        std::vector<Error> errors;
        uint32_t lineCount = 0;        // physical lines, line numbers count from 1 in the chunk
        bool hasAlpha = false;         // a vertex colour came with an alpha
        // Whether an element has a negative index, and per kind how far the non-negative
        // corners reach past the vertex statements above their element in the chunk: when
        // the statements above the chunk outnumber every reach, each index is in range.
        bool relative = false;
        int64_t reach[3] = {INT64_MIN, INT64_MIN, INT64_MIN};

        // Empties every array, keeping their capacity.
        void clear();
        size_t positionCount() const { return positions.size() / 3; }
    };

    // Parses `size` bytes of whole lines (the last may lack its line end) into `chunk`,
    // which is cleared first.
    static void Parse(const char* text, size_t size, Chunk& chunk);

    // The length of the longest prefix of `text` that ends with a line end which no
    // backslash continues: where a chunk may be cut. 0 when there is none.
    static size_t WholeLinesLength(const char* text, size_t size);

    // Calls `line(begin, end, number)` for each logical line of `text`: without its line
    // end, with the physical lines that backslashes continue joined by spaces, numbered by
    // the physical line it starts on (from 1). Returns the number of physical lines.
    template <class LineFunction>
    static uint32_t ForEachLine(const char* text, size_t size, LineFunction&& line);

    // Reads one number token at `p` (a token ends at a space, a tab, `#` or `end`), correctly
    // rounded; `p` moves past what was read. False, with `p` unchanged, when the token is
    // not a number. Shared with the material reader.
    static bool ParseFloat(const char*& p, const char* end, float& value);
};

template <class LineFunction>
uint32_t zuObjParser::ForEachLine(const char* text, size_t size, LineFunction&& line)
{
    const char* p = text;
    const char* const end = text + size;
    uint32_t number = 0;
    std::string joined;
    auto findLine = [end](const char* from, const char*& newline, const char*& contentEnd) {
        newline = static_cast<const char*>(std::memchr(from, '\n', static_cast<size_t>(end - from)));
        const char* stop = newline ? newline : end;
        contentEnd = stop > from && stop[-1] == '\r' ? stop - 1 : stop;
    };
    while (p < end) {
        const char* newline;
        const char* contentEnd;
        findLine(p, newline, contentEnd);
        const uint32_t first = ++number;
        if (contentEnd == p || contentEnd[-1] != '\\') {
            line(p, contentEnd, first);
        } else {
            joined.clear();
            for (;;) {
                const bool continues = contentEnd > p && contentEnd[-1] == '\\';
                joined.append(p, continues ? contentEnd - 1 : contentEnd);
                if (!continues || !newline)
                    break;
                joined.push_back(' ');
                p = newline + 1;
                findLine(p, newline, contentEnd);
                if (p < end)
                    ++number;
            }
            line(static_cast<const char*>(joined.data()), static_cast<const char*>(joined.data() + joined.size()), first);
        }
        p = newline ? newline + 1 : end;
    }
    return number;
}

} // namespace zu
