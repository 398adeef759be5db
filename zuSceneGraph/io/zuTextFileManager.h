#pragma once

#include <zuSceneGraph/io/zuCoreTextDriver.h>
#include <zuSceneGraph/io/zuDriverList.h>

#include <string>

namespace zu {

// Reads and writes plain text files through the text drivers. Unlike the other managers it
// tries every willing driver: those whose canLoad("") (canSave("") to save) is not
// SCORE_NONE are collected in list order and tried from the last to the first, until one
// succeeds. So a driver registered at the end is tried before the built-in one.
class zuTextFileManager : public zuDriverList<zuCoreTextDriver> {
public:
    bool readTextFile(std::string& out, const std::string& fileName) const;
    bool saveTextFile(const std::string& text, const std::string& fileName) const;
};

} // namespace zu
