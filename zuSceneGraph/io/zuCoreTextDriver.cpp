#include <zuSceneGraph/io/zuCoreTextDriver.h>

#include <zuSystem/zuLog.h>

#include <algorithm>
#include <fstream>

namespace zu {

const zuRtti zuCoreTextDriver::TYPE("zuCore.zuCoreTextDriver", nullptr);

zuCoreTextDriver::~zuCoreTextDriver() = default;

unsigned int zuCoreTextDriver::canLoad(const std::string& key, const zuVariant::zuVariantMapImpl&) const
{
    return key.empty() ? SCORE_PREFERRED : SCORE_NONE;
}

unsigned int zuCoreTextDriver::canSave(const std::string&, const zuVariant::zuVariantMapImpl&) const
{
    return SCORE_NONE;
}

bool zuCoreTextDriver::readTextFile(std::string& out, const std::string& fileName) const
{
    std::string path = fileName;
    std::replace(path.begin(), path.end(), '\\', '/');
    std::ifstream file(path, std::ios::in | std::ios::binary);
    if (!file.is_open()) {
        zuLog::instance().write("driver", "Error reading " + path);
        return false;
    }
    std::string text;
    char line[LINE_BUFFER_SIZE];
    // getline stores at most LINE_BUFFER_SIZE - 1 characters. A line of exactly that many
    // is read whole with its line end (2048 characters extracted); a longer one sets the
    // failure state. Both are refused: the buffer would have cut the line.
    while (file.getline(line, LINE_BUFFER_SIZE)) {
        const std::streamsize extracted = file.gcount();
        if (extracted == LINE_BUFFER_SIZE)
            break;
        // The count includes the line end unless the file ended first; a line may hold NULs.
        text.append(line, static_cast<size_t>(file.eof() ? extracted : extracted - 1));
        text += '\n';
    }
    if (file.bad()) {
        zuLog::instance().write("driver", "Error reading " + path);
        return false;
    }
    if (!file.eof()) {
        zuLog::instance().write("driver", "Too many characters in row\n");
        return false;
    }
    out += text;
    return true;
}

bool zuCoreTextDriver::saveTextFile(const std::string&, const std::string&) const
{
    return false;
}

} // namespace zu
