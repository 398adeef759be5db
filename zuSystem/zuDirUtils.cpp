#include <zuSystem/zuDirUtils.h>

#include <cstdio>
#include <memory>
#include <vector>

#include <sys/stat.h>

namespace zu {

namespace {

// The index just past the last separator, 0 when the path has none.
std::string::size_type fileNameStart(const std::string& path)
{
    const auto separator = path.find_last_of("/\\");
    return separator == std::string::npos ? 0 : separator + 1;
}

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

} // namespace

std::string zuDirUtils::ExtractFileExtension(const std::string& path)
{
    const auto nameStart = fileNameStart(path);
    const auto dot = path.find_last_of('.');
    if (dot == std::string::npos || dot < nameStart)
        return std::string();
    return path.substr(dot + 1);
}

std::string zuDirUtils::ExtractFileBaseName(const std::string& path)
{
    const auto nameStart = fileNameStart(path);
    const auto dot = path.find_last_of('.');
    if (dot == std::string::npos || dot < nameStart)
        return path.substr(nameStart);
    return path.substr(nameStart, dot - nameStart);
}

std::string zuDirUtils::ExtractFileName(const std::string& path)
{
    return path.substr(fileNameStart(path));
}

std::string zuDirUtils::ExtractDirectory(const std::string& path)
{
    return path.substr(0, fileNameStart(path));
}

bool zuDirUtils::CopyFileUtf8(const std::string& source, const std::string& target)
{
    struct stat64 sourceInfo;
    struct stat64 targetInfo;
    if (stat64(source.c_str(), &sourceInfo) != 0 || S_ISDIR(sourceInfo.st_mode))
        return false;
    // Opening the target for writing would empty the source when both are the same file.
    if (stat64(target.c_str(), &targetInfo) == 0 && targetInfo.st_dev == sourceInfo.st_dev
        && targetInfo.st_ino == sourceInfo.st_ino)
        return true;

    FileHandle in(fopen64(source.c_str(), "rb"));
    if (!in)
        return false;
    FileHandle out(fopen64(target.c_str(), "wb"));
    if (!out)
        return false;

    std::vector<char> chunk(1 << 16);
    bool ok = true;
    for (;;) {
        const size_t count = std::fread(chunk.data(), 1, chunk.size(), in.get());
        if (count > 0 && std::fwrite(chunk.data(), 1, count, out.get()) != count) {
            ok = false;
            break;
        }
        if (count < chunk.size()) {
            ok = !std::ferror(in.get());
            break;
        }
    }
    // The close flushes the last chunk: its failure is a failed copy too.
    ok = std::fclose(out.release()) == 0 && ok;
    if (!ok)
        std::remove(target.c_str());
    return ok;
}

bool zuDirUtils::FileExists(const std::string& path)
{
    struct stat64 info;
    return stat64(path.c_str(), &info) == 0 && !S_ISDIR(info.st_mode);
}

} // namespace zu
