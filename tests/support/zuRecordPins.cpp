#include "support/zuRecordPins.h"
#include "support/zuOutputCapture.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace zu::test {
namespace {

// A save that keeps the identities of the objects it wrote and where each record ends.
struct Saved {
    bool ok = false;
    std::vector<char> bytes;
    std::vector<uint64_t> identities;
    std::vector<size_t> ends;
};

Saved save(const std::vector<zuPointer<zuRttiInterface>>& topLevel, zuStreamVersion version)
{
    Saved saved;
    zuBaseStream stream;
    stream.SetVersion(version);
    for (const zuPointer<zuRttiInterface>& object : topLevel)
        stream.InsertTopLevel(object.get());
    char* buffer = nullptr;
    unsigned long size = 0;
    if (!stream.Save(buffer, size))
        return saved;
    saved.ok = true;
    saved.bytes.assign(buffer, buffer + size);
    delete[] buffer;
    for (int i = 0, end = 0; i < stream.GetOrderedObjectCount(); ++i) {
        const zuRttiInterface* object = stream.GetOrderedObjectAt(i);
        saved.identities.push_back(reinterpret_cast<uintptr_t>(object));
        end += (stream.IsTopLevel(object) ? 4 + 9 : 0) + object->GetDiskUsed(stream);
        saved.ends.push_back(static_cast<size_t>(end));
    }
    return saved;
}

// The string primitive at `at`, when it holds 1 to 64 printable characters.
bool stringAt(const std::vector<char>& bytes, size_t at, size_t end, std::string& text)
{
    int32_t length = 0;
    if (at + 4 > end)
        return false;
    std::memcpy(&length, &bytes[at], 4);
    if (length < 1 || length > 64 || at + 4 + static_cast<size_t>(length) > end)
        return false;
    text.assign(&bytes[at + 4], static_cast<size_t>(length));
    for (char c : text)
        if (!std::isprint(static_cast<unsigned char>(c)) || c == '\'' || c == '"' || c == '\\')
            return false;
    return true;
}

// A decimal of at most six significant digits that reads back as exactly this float, or "".
std::string shortFloat(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", static_cast<double>(value));
    const float back = std::strtof(text, nullptr);
    return std::memcmp(&back, &value, 4) == 0 ? text : "";
}

// The tokens a record may be read as at one place, with what each costs: the reading of a
// record is the one of least cost, so that a float or an identity is read where it starts
// rather than across the bools before it.
struct Token {
    std::string text;
    size_t size;
    int cost;
};

std::string tagged(char mark, const std::string& body, const char* close = "")
{
    std::string text(1, mark);
    return text.append(body).append(close);
}

std::vector<Token> tokensAt(const std::vector<char>& bytes, size_t at, size_t end,
                            const std::vector<uint64_t>& identities)
{
    std::vector<Token> tokens;
    char hex[4];
    std::snprintf(hex, sizeof hex, "%02x", static_cast<unsigned char>(bytes[at]));
    tokens.push_back({hex, 1, 4});
    uint64_t identity = 0;
    if (at + 8 <= end && (std::memcpy(&identity, &bytes[at], 8), identity != 0)) {
        const auto known = std::find(identities.begin(), identities.end(), identity);
        if (known != identities.end())
            tokens.push_back({tagged('<', std::to_string(known - identities.begin()), ">"), 8, 1});
    }
    std::string string;
    if (stringAt(bytes, at, end, string))
        tokens.push_back({tagged('\'', string, "'"), 4 + string.size(), string.size() < 3 ? 9 : 1});
    if (at + 4 <= end) {
        int32_t word = 0;
        float real = 0;
        std::memcpy(&word, &bytes[at], 4);
        std::memcpy(&real, &bytes[at], 4);
        if (word > -4096 && word < 4096)
            tokens.push_back({tagged('#', std::to_string(word)), 4, word == 0 ? 4 : 5});
        const std::string decimal = shortFloat(real);
        if (!decimal.empty() && word != 0 && (std::fabs(real) >= 1e-6f || real == 0.0f))
            tokens.push_back({tagged('~', decimal), 4, word == INT32_MIN ? 6 : 4});
    }
    if (at + 8 <= end) {
        double real = 0;
        std::memcpy(&real, &bytes[at], 8);
        char text[40];
        std::snprintf(text, sizeof text, "%.10g", real);
        const double size = std::fabs(real);
        if (std::strtod(text, nullptr) == real && size >= 1e-15 && size <= 1e300)
            tokens.push_back({tagged('=', text), 8, 8});
    }
    return tokens;
}

std::string textOf(const Saved& saved)
{
    std::string text;
    size_t start = 0;
    for (size_t end : saved.ends) {
        // Least cost from each place to the end of the record, and the token that starts it.
        const size_t n = end - start;
        std::vector<int> cost(n + 1, 0);
        std::vector<Token> best(n);
        for (size_t i = n; i-- > 0;) {
            cost[i] = -1;
            for (Token& token : tokensAt(saved.bytes, start + i, end, saved.identities))
                if (i + token.size <= n && (cost[i] < 0 || token.cost + cost[i + token.size] < cost[i])) {
                    cost[i] = token.cost + cost[i + token.size];
                    best[i] = std::move(token);
                }
        }
        for (size_t i = 0; i < n; i += best[i].size) {
            text += best[i].text;
            text += ' ';
        }
        text += "|\n";
        start = end;
    }
    return text;
}

template <class T>
void append(std::vector<char>& bytes, T value)
{
    const char* first = reinterpret_cast<const char*>(&value);
    bytes.insert(bytes.end(), first, first + sizeof value);
}

// The bytes of a pin; `ends` gets the end of each record.
std::vector<char> bytesOf(const std::string& text, const std::vector<uint64_t>& identities, std::vector<size_t>& ends)
{
    std::vector<char> bytes;
    for (size_t i = 0; i < text.size();) {
        const char c = text[i];
        const char* rest = text.c_str() + i + 1;
        char* next = nullptr;
        if (std::isspace(static_cast<unsigned char>(c))) {
            ++i;
            continue;
        }
        if (c == '|') {
            ends.push_back(bytes.size());
        } else if (c == '\'') {
            const size_t close = text.find('\'', i + 1);
            append(bytes, static_cast<int32_t>(close - i - 1));
            bytes.insert(bytes.end(), text.begin() + static_cast<long>(i) + 1, text.begin() + static_cast<long>(close));
            next = const_cast<char*>(text.c_str()) + close;
        } else if (c == '<') {
            const unsigned long k = std::strtoul(rest, &next, 10);
            append(bytes, k < identities.size() ? identities[k] : uint64_t(0));
        } else if (c == '#') {
            append(bytes, static_cast<int32_t>(std::strtol(rest, &next, 10)));
            --next;
        } else if (c == '=') {
            append(bytes, std::strtod(rest, &next));
            --next;
        } else if (c == '~') {
            append(bytes, std::strtof(rest, &next));
            --next;
        } else {
            bytes.push_back(static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16)));
            next = const_cast<char*>(text.c_str()) + i + 1;
        }
        i = next ? static_cast<size_t>(next - text.c_str()) + 1 : i + 1;
    }
    return bytes;
}

} // namespace

std::string pinOf(const std::vector<zuPointer<zuRttiInterface>>& topLevel, zuStreamVersion version)
{
    const Saved saved = save(topLevel, version);
    return saved.ok ? textOf(saved) : std::string();
}

std::vector<char> pinBytes(const std::string& text)
{
    std::vector<uint64_t> identities;
    for (uint64_t k = 1; k <= 64; ++k)
        identities.push_back(0x1000 * k);
    std::vector<size_t> ends;
    return bytesOf(text, identities, ends);
}

std::vector<zuPointer<zuRttiInterface>> loadPin(std::vector<char> bytes, zuStreamVersion version)
{
    zuBaseStream stream;
    stream.SetVersion(version);
    std::vector<zuPointer<zuRttiInterface>> loaded;
    if (stream.Load(bytes.data(), bytes.size()))
        for (int i = 0; i < stream.GetObjectCount(); ++i)
            loaded.emplace_back(stream.GetObjectAt(i));
    return loaded;
}

::testing::AssertionResult checkPin(const zuRecordPin& pin)
{
    const std::vector<zuPointer<zuRttiInterface>> objects = pin.make();
    const Saved saved = save(objects, pin.version);
    if (!saved.ok)
        return ::testing::AssertionFailure() << "the save fails";
    std::vector<size_t> ends;
    std::vector<char> bytes = bytesOf(pin.text, saved.identities, ends);
    if (saved.bytes != bytes)
        return ::testing::AssertionFailure() << "saved as\n" << textOf(saved);

    zuOutputCapture quietOut(zuOutputCapture::STDOUT), quietErr(zuOutputCapture::STDERR);
    zuLogCapture log;
    {
        zuBaseStream stream;
        stream.SetVersion(pin.version);
        if (!stream.Load(bytes.data(), bytes.size()) || stream.GetObjectCount() != static_cast<int>(objects.size()))
            return ::testing::AssertionFailure() << "the pin does not load";
        std::vector<zuPointer<zuRttiInterface>> copies;
        for (int i = 0; i < stream.GetObjectCount(); ++i) {
            copies.emplace_back(stream.GetObjectAt(i));
            const zuRttiInterface* original = objects[static_cast<size_t>(i)];
            if (!copies.back()->IsExactly(original->GetType()) || !copies.back()->Equals(original))
                return ::testing::AssertionFailure() << "loaded object " << i << " differs";
        }
        if (pin.savesBackAlike && pinOf(copies, pin.version) != textOf(saved))
            return ::testing::AssertionFailure() << "the copies save as\n" << pinOf(copies, pin.version);
    }
    for (size_t cut = 0; cut < bytes.size(); ++cut) {
        std::vector<char> prefix(bytes.begin(), bytes.begin() + static_cast<long>(cut));
        zuBaseStream stream;
        stream.SetVersion(pin.version);
        const bool atEnd = cut == 0 || std::find(ends.begin(), ends.end(), cut) != ends.end();
        if (stream.Load(prefix.data(), prefix.size()) != atEnd)
            return ::testing::AssertionFailure() << "a cut at " << cut << (atEnd ? " does not load" : " loads");
    }
    return ::testing::AssertionSuccess();
}

} // namespace zu::test
