#include "ExpatTuple.h"

#include <expat.h>

#include <charconv>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace velmorak::bench {

namespace {

struct Reading {
    std::vector<std::vector<double>> columns;
    std::size_t position = 0;
};

void XMLCALL began(void* data, const XML_Char* name, const XML_Char** attributes) {
    auto& reading = *static_cast<Reading*>(data);
    if (std::strcmp(name, "row") == 0) {
        reading.position = 0;
    } else if (std::strcmp(name, "entry") == 0) {
        const char* const text = attributes[1];
        double value = 0.0;
        std::from_chars(text, text + std::strlen(text), value);
        reading.columns[reading.position++].push_back(value);
    }
}

void XMLCALL ended(void*, const XML_Char*) {}

}  // namespace

std::vector<std::vector<double>> readWithExpat(const std::filesystem::path& file, std::size_t columns) {
    Reading reading;
    reading.columns.resize(columns);
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &reading);
    XML_SetElementHandler(parser, began, ended);
    std::ifstream input(file, std::ios::binary);
    std::vector<char> piece(1U << 16U);
    bool isWhole = true;
    while (input && isWhole) {
        input.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        isWhole = XML_Parse(parser, piece.data(), static_cast<int>(input.gcount()), input ? 0 : 1) == XML_STATUS_OK;
    }
    XML_ParserFree(parser);
    if (!isWhole) {
        throw std::runtime_error("expat does not read the file");
    }
    return std::move(reading.columns);
}

}  // namespace velmorak::bench
