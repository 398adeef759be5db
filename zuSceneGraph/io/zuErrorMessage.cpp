#include <zuSceneGraph/io/zuErrorMessage.h>

#include <tuple>
#include <utility>

namespace zu {

zuErrorMessage::zuErrorMessage(int64_t code_, int64_t line_, std::string text_)
    : line(line_), code(code_), text(std::move(text_))
{
}

bool zuErrorMessage::operator<(const zuErrorMessage& other) const
{
    return std::tie(line, code, text) < std::tie(other.line, other.code, other.text);
}

bool zuErrorMessage::operator==(const zuErrorMessage& other) const
{
    return line == other.line && code == other.code && text == other.text;
}

} // namespace zu
