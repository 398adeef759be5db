#pragma once

#include <Wm4/Wm4ColorRGB.h>

#include <map>
#include <string>

namespace zu {

// What a material description file says about one material, as a material driver parses
// it: the colours and factors of a material state and the files of its texture maps, which
// the application turns into states and textures. The defaults are those of a new
// zuMaterialState: matte grey, opaque, no maps.
class zuMaterialInfo {
public:
    std::string name;
    Wm4::ColorRGB ambient{0.2f, 0.2f, 0.2f};
    Wm4::ColorRGB diffuse{0.8f, 0.8f, 0.8f};
    Wm4::ColorRGB specular{0.0f, 0.0f, 0.0f};
    Wm4::ColorRGB emissive{0.0f, 0.0f, 0.0f};
    float shininess = 1.0f;
    float opacity = 1.0f;
    // Map role ("diffuse", "bump", "specular", ...) -> image file name.
    std::map<std::string, std::string> maps;
};

} // namespace zu
