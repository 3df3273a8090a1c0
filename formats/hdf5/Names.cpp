#include "hdf5/Names.h"

#include "hdf5/Leaves.h"

#include <velmorak/Utf8.h>

#include <charconv>
#include <cstddef>

namespace velmorak::hdf5 {
namespace {

constexpr hssize_t maxTexts = 100000;
constexpr std::size_t maxTextBytes = std::size_t{1} << 20U;
constexpr std::size_t maxNames = 100000;

/// An attribute or a dataset, which the library reads in two ways.
class TextSource {
public:
    TextSource(hid_t object, const std::string& attribute);

    Handle type() const { return {isAttribute ? H5Aget_type(id) : H5Dget_type(id), H5Tclose}; }
    Handle space() const { return {isAttribute ? H5Aget_space(id) : H5Dget_space(id), H5Sclose}; }
    bool read(hid_t memoryType, void* target) const;
    bool exists() const { return id >= 0; }

private:
    Handle held;
    bool isAttribute;
    hid_t id;
};

TextSource::TextSource(hid_t object, const std::string& attribute)
    : held(attribute.empty()
               ? Handle()
               : Handle(H5Aexists(object, attribute.c_str()) > 0 ? H5Aopen(object, attribute.c_str(), H5P_DEFAULT) : -1,
                        H5Aclose)),
      isAttribute(!attribute.empty()),
      id(isAttribute ? held.id() : object) {}

bool TextSource::read(hid_t memoryType, void* target) const {
    return (isAttribute ? H5Aread(id, memoryType, target)
                        : H5Dread(id, memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, target)) >= 0;
}

std::vector<std::string> longTexts(const TextSource& source, hid_t type, hid_t space, std::size_t count) {
    std::vector<char*> pointers(count, nullptr);
    std::vector<std::string> texts;
    if (source.read(type, pointers.data())) {
        for (const char* text : pointers) {
            texts.push_back(text ? toUtf8(text) : "");
        }
    }
    H5Dvlen_reclaim(type, space, H5P_DEFAULT, pointers.data());
    return texts;
}

std::vector<std::string> shortTexts(const TextSource& source, hid_t type, std::size_t count) {
    const Leaf leaf{.kind = Leaf::Kind::Text,
                    .bytes = H5Tget_size(type),
                    .padding = H5Tget_strpad(type) == H5T_STR_SPACEPAD ? ' ' : '\0'};
    if (leaf.bytes == 0 || count > maxTextBytes / leaf.bytes) {
        return {};
    }
    std::string bytes(count * leaf.bytes, '\0');
    if (!source.read(type, bytes.data())) {
        return {};
    }
    Column texts{.values = Column::Texts(), .offsets = {}};
    appendTexts(texts, leaf, bytes.data(), leaf.bytes, count);
    return texts.texts();
}

/// Takes a line without its end off the front.
std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

/// Resolves \uXXXX, in which Python pickles characters beyond Latin-1.
std::string unescaped(std::string_view text) {
    constexpr std::size_t digits = 4;
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned code = 0;
        const bool isEscape = text.substr(i).starts_with("\\u") && i + 2 + digits <= text.size();
        if (!isEscape ||
            std::from_chars(text.data() + i + 2, text.data() + i + 2 + digits, code, 16).ec != std::errc()) {
            appendLatin1(text[i], result);
            continue;
        }
        appendUtf8(code, result);
        i += 1 + digits;
    }
    return toUtf8(result);
}

herr_t addName(hid_t /*group*/, const char* name, const H5L_info_t* info, void* names) {
    auto& list = *static_cast<std::vector<std::string>*>(names);
    if (info->type == H5L_TYPE_HARD) {
        list.emplace_back(name);
    }
    return list.size() < maxNames ? 0 : 1;
}

}  // namespace

std::vector<std::string> textsIn(hid_t object, const std::string& attribute) {
    const TextSource source(object, attribute);
    if (!source.exists()) {
        return {};
    }
    const Handle type = source.type();
    const Handle space = source.space();
    const hssize_t count = space ? H5Sget_simple_extent_npoints(space.id()) : 0;
    if (!type || count <= 0 || count > maxTexts || H5Tget_class(type.id()) != H5T_STRING) {
        return {};
    }
    return H5Tis_variable_str(type.id()) > 0 ? longTexts(source, type.id(), space.id(), static_cast<std::size_t>(count))
                                             : shortTexts(source, type.id(), static_cast<std::size_t>(count));
}

std::string textIn(hid_t object, const std::string& attribute) {
    const std::vector<std::string> texts = textsIn(object, attribute);
    return texts.size() == 1 ? texts.front() : std::string();
}

std::vector<std::string> pickledTexts(std::string_view bytes) {
    std::vector<std::string> texts;
    while (!bytes.empty()) {
        const char code = bytes.front();
        bytes.remove_prefix(1);
        switch (code) {
            case 'V':
                texts.push_back(unescaped(takeLine(bytes)));
                break;
            case 'p':
            case 'g':
                takeLine(bytes);
                break;
            case '(':
            case 'l':
            case 'a':
                break;
            case '.':
                return texts;
            default:
                return {};
        }
    }
    return {};
}

std::vector<std::string> namesIn(hid_t group) {
    std::vector<std::string> names;
    hsize_t position = 0;
    H5Literate(group, H5_INDEX_NAME, H5_ITER_INC, &position, addName, &names);
    return names;
}

}  // namespace velmorak::hdf5
