#pragma once

#include <zuSceneGraph/io/zuCoreDriver.h>
#include <zuSceneGraph/objects/zuRtti.h>

#include <string>

namespace zu {

// The kind of driver that reads and writes plain text files, and the built-in one.
// The text manager asks with an empty key.
//
// The built-in driver reads only: it answers SCORE_PREFERRED to canLoad("") (SCORE_NONE to
// any other key) and SCORE_NONE to every canSave, and saveTextFile fails, so text is saved
// only through a driver the application registers.
//
// readTextFile turns every '\\' of the file name into '/', then reads the file line by line,
// appending each line and a "\n" to `out`. A line longer than MAX_LINE_LENGTH characters
// fails the read with "Too many characters in row\n" in the log, category "driver" (the last
// line may hold one character more when no line end follows it); a file that cannot be
// opened or read fails with "Error reading " and its name. On failure `out` is left as it
// was.
class zuCoreTextDriver : public zuCoreDriver<std::string, std::string> {
public:
    static const zuRtti TYPE;

    // The line buffer holds 2048 characters: a line and its terminator.
    static constexpr int LINE_BUFFER_SIZE = 2048;
    static constexpr int MAX_LINE_LENGTH = LINE_BUFFER_SIZE - 2;

    zuCoreTextDriver() = default;
    ~zuCoreTextDriver() override;

    unsigned int canLoad(const std::string& key, const zuVariant::zuVariantMapImpl& options) const override;
    unsigned int canSave(const std::string& key, const zuVariant::zuVariantMapImpl& options) const override;
    virtual bool readTextFile(std::string& out, const std::string& fileName) const;
    virtual bool saveTextFile(const std::string& text, const std::string& fileName) const;
};

} // namespace zu
