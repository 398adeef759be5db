#pragma once

#include <string>

namespace zu {

// Path helpers on UTF-8 paths; both '/' and '\\' separate folders.
class zuDirUtils {
public:
    // "dir/model.obj.3" -> "3"; "dir/model" -> ""; "dir/.hidden" -> "hidden".
    // The extension is returned without its dot and with its case unchanged.
    static std::string ExtractFileExtension(const std::string& path);
    // The file name without folder and without its last extension: "dir/model.obj.3" -> "model.obj".
    static std::string ExtractFileBaseName(const std::string& path);
    // The file name with its extension: "dir/model.obj" -> "model.obj".
    static std::string ExtractFileName(const std::string& path);
    // The folder with its trailing separator: "dir/model.obj" -> "dir/"; "model.obj" -> "".
    static std::string ExtractDirectory(const std::string& path);
    // Copies a file byte for byte, replacing the target. False when either side fails (a
    // partly written target is removed). Copying a file onto itself leaves it and succeeds.
    static bool CopyFileUtf8(const std::string& source, const std::string& target);
    // True for an existing path that is not a folder.
    static bool FileExists(const std::string& path);
};

} // namespace zu
