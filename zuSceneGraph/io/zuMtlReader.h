#pragma once

#include <zuSceneGraph/objects/zuCatalog.h>
#include <zuSceneGraph/objects/zuPointer.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace zu {

class zuImage;
class zuMaterialState;
class zuTextureState;

// A report of the OBJ and MTL readers: the line it concerns (of the file its text names
// when that is not the OBJ file) and what is wrong.
struct zuObjMessage {
    int64_t line;
    std::string text;
};

// Reads MTL material libraries into the render states of the leaves that use them: per
// material one zuMaterialState (Ka ambient, Kd diffuse, Ks specular, Ke emissive, Ns
// shininess, d opacity or Tr its complement) and, when it names texture maps, one
// zuTextureState whose textures hold their images by file name in the lent image
// catalogue (map_Kd diffuse, map_Ka diffuse when there is no map_Kd, map_Ks specular,
// map_Ke emissive, map_Bump / bump bump, map_d opacity, refl reflection). The images are
// named by their path and carry no pixels: whoever holds the catalogue loads them. Ni and
// illum are read and checked but have no state to go to; map options are read, -clamp sets
// the wrap mode and the others have no texture field to go to.
class zuMtlReader {
public:
    struct Material {
        zuPointer<zuMaterialState> material;
        zuPointer<zuTextureState> textures;  // null without texture maps
    };

    explicit zuMtlReader(zuCatalog<zuImage>& images);
    ~zuMtlReader();
    zuMtlReader(const zuMtlReader&) = delete;
    zuMtlReader& operator=(const zuMtlReader&) = delete;

    // Reads the library at `path`. False when it cannot be read. A material defined again
    // (here or in an earlier library) keeps its first definition.
    bool ReadFile(const std::string& path, std::vector<zuObjMessage>& messages);
    // Reads library text; texture files are looked for relative to `folder`, and messages
    // name the library as `label`.
    void Read(const char* text, size_t size, const std::string& folder, const std::string& label,
              std::vector<zuObjMessage>& messages);

    // The material of that name, or null.
    const Material* Find(const std::string& name) const;

private:
    zuCatalog<zuImage>& mImages;
    std::map<std::string, Material> mMaterials;
};

} // namespace zu
