#include <zuSceneGraph/io/zuMtlReader.h>

#include <zuSceneGraph/io/zuObjParser.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>

#include <zuSystem/zuDirUtils.h>
#include <zuSystem/zuFileIoDevice.h>

#include <cstring>

namespace zu {

namespace {

bool isSpace(char c)
{
    return c == ' ' || c == '\t';
}

const char* skipSpaces(const char* p, const char* end)
{
    while (p < end && isSpace(*p))
        ++p;
    return p;
}

const char* wordEnd(const char* p, const char* end)
{
    while (p < end && !isSpace(*p))
        ++p;
    return p;
}

std::string trimmed(const char* p, const char* end)
{
    p = skipSpaces(p, end);
    while (end > p && isSpace(end[-1]))
        --end;
    return std::string(p, end);
}

bool is(const std::string& word, const char* keyword)
{
    return word == keyword;
}

// The numbers of a statement, up to `capacity`; false at the first token that is not one.
bool readNumbers(const char*& p, const char* end, float* values, int capacity, int& count)
{
    count = 0;
    p = skipSpaces(p, end);
    while (p < end && *p != '#' && count < capacity) {
        if (!zuObjParser::ParseFloat(p, end, values[count]))
            return false;
        ++count;
        p = skipSpaces(p, end);
    }
    return true;
}

struct TextureKey {
    const char* keyword;
    zuTexture::Channel channel;
};

constexpr TextureKey TEXTURE_KEYS[] = {
    {"map_Kd", zuTexture::CH_DIFFUSE},   {"map_Ka", zuTexture::CH_DIFFUSE},    {"map_Ks", zuTexture::CH_SPECULAR},
    {"map_Ke", zuTexture::CH_EMISSIVE},  {"map_Bump", zuTexture::CH_BUMP},     {"map_bump", zuTexture::CH_BUMP},
    {"bump", zuTexture::CH_BUMP},        {"map_d", zuTexture::CH_OPACITY},     {"refl", zuTexture::CH_REFLECTION},
};

// Map options and how many arguments each takes; -1: one to three numbers.
struct TextureOption {
    const char* name;
    int arguments;
};

constexpr TextureOption TEXTURE_OPTIONS[] = {
    {"-blendu", 1}, {"-blendv", 1}, {"-cc", 1},      {"-clamp", 1}, {"-bm", 1}, {"-boost", 1}, {"-texres", 1},
    {"-imfchan", 1}, {"-type", 1},  {"-mm", 2},      {"-o", -1},    {"-s", -1}, {"-t", -1},
};

// The library's state while it reads one file.
class LibraryReader {
public:
    LibraryReader(zuCatalog<zuImage>& images, std::map<std::string, zuMtlReader::Material>& materials,
                  const std::string& folder, const std::string& label, std::vector<zuObjMessage>& messages)
        : mImages(images), mMaterials(materials), mFolder(folder), mLabel(label), mMessages(messages)
    {
    }

    void line(const char* p, const char* end, uint32_t number)
    {
        p = skipSpaces(p, end);
        if (p == end || *p == '#')
            return;
        const char* stop = wordEnd(p, end);
        const std::string keyword(p, stop);
        mLine = number;
        if (is(keyword, "newmtl"))
            return newMaterial(trimmed(stop, end));
        if (!mCurrent) {
            report("\"" + keyword + "\" before any newmtl; the line is skipped");
            return;
        }
        zuMaterialState& state = *mCurrent->material;
        if (is(keyword, "Ka"))
            return readColor(stop, end, state.Ambient, keyword);
        if (is(keyword, "Kd"))
            return readColor(stop, end, state.Diffuse, keyword);
        if (is(keyword, "Ks"))
            return readColor(stop, end, state.Specular, keyword);
        if (is(keyword, "Ke"))
            return readColor(stop, end, state.Emissive, keyword);
        if (is(keyword, "Ns"))
            return void(readScalar(stop, end, &state.Shininess, keyword));
        if (is(keyword, "d")) {
            const char* q = skipSpaces(stop, end);
            if (end - q >= 5 && std::memcmp(q, "-halo", 5) == 0)
                q += 5;
            return void(readScalar(q, end, &state.Opacity, keyword));
        }
        if (is(keyword, "Tr")) {
            float transparency = 0.0f;
            if (readScalar(stop, end, &transparency, keyword))
                state.Opacity = 1.0f - transparency;
            return;
        }
        if (is(keyword, "Ni") || is(keyword, "illum")) {
            float unused;
            readScalar(stop, end, &unused, keyword);
            return;
        }
        for (const TextureKey& key : TEXTURE_KEYS)
            if (is(keyword, key.keyword))
                return readMap(stop, end, key, keyword);
        // Other keys (spectral curves, physically based extensions) have no state to go to.
    }

private:
    void report(const std::string& text) { mMessages.push_back({mLine, mLabel + ": " + text}); }

    void newMaterial(const std::string& name)
    {
        const auto [entry, inserted] = mMaterials.try_emplace(name);
        if (!inserted) {
            report("material \"" + name + "\" is defined again; the first definition is kept");
            mDiscarded = zuMtlReader::Material{new zuMaterialState, nullptr};
            mCurrent = &mDiscarded;
            return;
        }
        entry->second.material = new zuMaterialState;
        mCurrent = &entry->second;
        mHasDiffuseMap = false;
    }

    void readColor(const char* p, const char* end, Wm4::ColorRGB& color, const std::string& keyword)
    {
        float values[3];
        int count = 0;
        const char* q = skipSpaces(p, end);
        if (q < end && (std::strncmp(q, "spectral", 8) == 0 || std::strncmp(q, "xyz", 3) == 0)) {
            report(keyword + " with a spectral or CIE XYZ colour is not supported; the line is skipped");
            return;
        }
        if (!readNumbers(q, end, values, 3, count) || (count != 1 && count != 3) || (q < end && *q != '#')) {
            report("bad colour in a " + keyword + " statement; the line is skipped");
            return;
        }
        color = count == 1 ? Wm4::ColorRGB(values[0], values[0], values[0])
                           : Wm4::ColorRGB(values[0], values[1], values[2]);
    }

    bool readScalar(const char* p, const char* end, float* value, const std::string& keyword)
    {
        float read = 0.0f;
        int count = 0;
        if (!readNumbers(p, end, &read, 1, count) || count != 1 || (p < end && *p != '#')) {
            report("bad number in a " + keyword + " statement; the line is skipped");
            return false;
        }
        *value = read;
        return true;
    }

    void readMap(const char* p, const char* end, const TextureKey& key, const std::string& keyword)
    {
        bool clamp = false;
        p = skipSpaces(p, end);
        while (p < end && *p == '-') {
            const std::string option(p, wordEnd(p, end));
            const TextureOption* known = nullptr;
            for (const TextureOption& candidate : TEXTURE_OPTIONS)
                if (option == candidate.name)
                    known = &candidate;
            if (!known)
                break;  // not an option: a file name that starts with '-'
            p = skipSpaces(wordEnd(p, end), end);
            if (known->arguments < 0) {
                float value;
                for (int i = 0; i < 3 && p < end && zuObjParser::ParseFloat(p, end, value); ++i)
                    p = skipSpaces(p, end);
                continue;
            }
            for (int i = 0; i < known->arguments && p < end; ++i) {
                const char* argumentEnd = wordEnd(p, end);
                if (option == "-clamp")
                    clamp = std::string(p, argumentEnd) == "on";
                p = skipSpaces(argumentEnd, end);
            }
        }
        std::string file = trimmed(p, end);
        if (file.empty()) {
            report(keyword + " names no file; the line is skipped");
            return;
        }
        const bool ambient = keyword == "map_Ka";
        if (ambient && mHasDiffuseMap)
            return;
        for (char& c : file)
            if (c == '\\')
                c = '/';
        const std::string path = file[0] == '/' ? file : mFolder + file;
        if (!zuDirUtils::FileExists(path))
            report("texture file \"" + file + "\" not found");

        zuPointer<zuImage> image(new zuImage);
        image->SetName(path);
        zuPointer<zuTexture> texture(new zuTexture(mImages.Share(image.get())));
        texture->SetChannel(key.channel);
        if (clamp)
            texture->SetWrap(zuTexture::WM_CLAMP_EDGE, zuTexture::WM_CLAMP_EDGE);
        if (!mCurrent->textures)
            mCurrent->textures = new zuTextureState;
        zuTextureState& textures = *mCurrent->textures;
        if (key.channel == zuTexture::CH_DIFFUSE) {
            // A map_Kd after a map_Ka takes the ambient map's slot.
            for (int i = 0; i < textures.GetTextureQuantity(); ++i)
                if (textures.GetTexture(i) && textures.GetTexture(i)->GetChannel() == zuTexture::CH_DIFFUSE) {
                    if (!ambient)
                        textures.SetTexture(i, texture.get());
                    mHasDiffuseMap |= !ambient;
                    return;
                }
        }
        textures.AttachTexture(texture.get());
        mHasDiffuseMap |= key.channel == zuTexture::CH_DIFFUSE && !ambient;
    }

    zuCatalog<zuImage>& mImages;
    std::map<std::string, zuMtlReader::Material>& mMaterials;
    const std::string& mFolder;
    const std::string& mLabel;
    std::vector<zuObjMessage>& mMessages;
    zuMtlReader::Material* mCurrent = nullptr;
    zuMtlReader::Material mDiscarded;
    bool mHasDiffuseMap = false;
    int64_t mLine = 0;
};

} // namespace

zuMtlReader::zuMtlReader(zuCatalog<zuImage>& images) : mImages(images) {}

zuMtlReader::~zuMtlReader() = default;

bool zuMtlReader::ReadFile(const std::string& path, std::vector<zuObjMessage>& messages)
{
    zuFileIoDevice file(path, zuFileIoDevice::ReadOnly);
    const int64_t size = file.isOpen() ? file.size() : -1;
    if (size < 0)
        return false;
    std::string text(static_cast<size_t>(size), '\0');
    if (file.read(text.data(), size) != size)
        return false;
    Read(text.data(), text.size(), zuDirUtils::ExtractDirectory(path), zuDirUtils::ExtractFileName(path), messages);
    return true;
}

void zuMtlReader::Read(const char* text, size_t size, const std::string& folder, const std::string& label,
                       std::vector<zuObjMessage>& messages)
{
    LibraryReader reader(mImages, mMaterials, folder, label, messages);
    zuObjParser::ForEachLine(text, size,
                             [&reader](const char* begin, const char* end, uint32_t line) { reader.line(begin, end, line); });
}

const zuMtlReader::Material* zuMtlReader::Find(const std::string& name) const
{
    const auto found = mMaterials.find(name);
    return found == mMaterials.end() ? nullptr : &found->second;
}

} // namespace zu
