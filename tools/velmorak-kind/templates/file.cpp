#include <velmorak/ShortKinds.h>

#include <fstream>

// Each line of the file has a word and a number.
std::optional<std::tuple<std::string, double>> nextRow(std::ifstream& stream) {
    std::string word;
    double number = 0.0;
    if (!(stream >> word)) {
        return std::nullopt;
    }
    if (!(stream >> number)) {
        throw velmorak::Failure("expected a number after \"" + word + "\"");
    }
    return std::tuple(word, number);
}

VELMORAK_COLLECTION(registry) {
    registry.group("@NAME@");
    velmorak::fileSource(registry, {"Words", "Reads a text file with a word and a number on each line."},
                         {{"word"}, {"number"}}, [](const std::filesystem::path& file) {
                             auto stream = std::make_shared<std::ifstream>(file);
                             return [stream] { return nextRow(*stream); };
                         });
}
