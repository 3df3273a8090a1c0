#include "Script.h"

#include <iomanip>
#include <sstream>
#include <stdexcept>

namespace recording {
namespace {

using Words = std::vector<std::string>;

Words wordsOf(const std::string& line) {
    std::istringstream stream(line);
    Words words;
    std::string word;
    while (stream >> std::quoted(word)) {
        if (word.starts_with('#')) {
            break;
        }
        words.push_back(word);
    }
    return words;
}

class Reader {
public:
    explicit Reader(Script& script) : script(script) {}

    void read(const Words& words) {
        const std::string& statement = words.front();
        if (statement == "kind" || statement == "in" || statement == "out" || statement == "about" ||
            statement == "extent") {
            readKind(words);
        } else if (statement == "example") {
            script.examples.push_back({words.at(1), words.at(2), words.at(3), ""});
        } else if (statement == "run") {
            script.runIsDeaf = words.at(1) == "deaf";
            script.runBlocks = script.runIsDeaf || words.at(1) == "blocks";
        } else {
            readDocument(words);
        }
    }

private:
    void readKind(const Words& words) {
        const std::string& statement = words.front();
        const auto word = [&words](std::size_t i) { return i < words.size() ? words[i] : std::string(); };
        if (statement == "kind") {
            script.kinds.push_back({words.at(2) + '/' + words.at(1), words.at(2), "", word(3), words.at(1), ""});
            script.templates.emplace_back();
        } else if (statement == "in") {
            script.templates.back().inputs.push_back({words.at(1), word(3), word(2), nullptr, 0});
        } else if (statement == "out") {
            script.templates.back().outputs.push_back({words.at(1), "any", word(2), {}, {}});
        } else if (statement == "about") {
            script.templates.back().description = words.at(1);
        } else {
            std::istringstream(words.at(1)) >> script.templates.back().width;
        }
    }

    void readDocument(const Words& words) {
        const std::string& statement = words.front();
        if (statement == "document") {
            document = &script.documents[words.at(1)];
        } else if (statement == "plugin" && document) {
            DocumentPlugin entry{words.at(1), words.at(2), 0, 0, words.size() > 5 && words[5] == "collapsed"};
            std::istringstream(words.at(3)) >> entry.x;
            std::istringstream(words.at(4)) >> entry.y;
            document->plugins.push_back(entry);
        } else if (statement == "bind" && document) {
            document->bindings.push_back({words.at(1), words.at(2), words.at(3), words.at(4)});
        } else {
            throw std::runtime_error("recording library: what is '" + statement + "'?");
        }
    }

    Script& script;
    Document* document = nullptr;
};

}  // namespace

Script Script::parse(const std::string& text) {
    Script script;
    Reader reader(script);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (const Words words = wordsOf(line); !words.empty()) {
            reader.read(words);
        }
    }
    return script;
}

}  // namespace recording
