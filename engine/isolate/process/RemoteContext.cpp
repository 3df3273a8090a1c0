#include "isolate/process/RemoteContext.h"

#include "isolate/Codec.h"

#include <atomic>
#include <exception>
#include <utility>

namespace velmorak::isolation {
namespace {

namespace fs = std::filesystem;

class RemoteFile : public ResultFile {
public:
    RemoteFile(Links& links, const std::string& name) : links(links) {
        links.ask(
            Op::BeginResult, [&](MessageWriter& message) { message.text(name); },
            [this](MessageReader& answer) {
                number = answer.number<std::uint64_t>();
                place = answer.text();
            });
    }
    ~RemoteFile() override {
        try {
            tell(Op::DropResult);
        } catch (const std::exception&) {
            // The program removes the file when this process ends.
        }
    }

    const fs::path& path() const override { return place; }
    void keep() override { tell(Op::KeepResult); }

private:
    void tell(Op op) {
        links.ask(op, [this](MessageWriter& message) { message.number(number); });
    }

    Links& links;
    std::uint64_t number = 0;
    fs::path place;
};

}  // namespace

RemoteContext::RemoteContext(Links& links, const Task& task, FileDescriptor page)
    : links(links), task(task), page(std::move(page)), rows(std::make_shared<MemoryBudget>(task.rowBytes)) {}

bool RemoteContext::isStopping() const {
    if (!task.isPreview) {
        return std::atomic_ref<char>(*page.data()).load() != 0;
    }
    bool isStopping = false;
    links.ask(
        Op::IsStopping, [](MessageWriter&) {}, [&](MessageReader& answer) { isStopping = answer.flag(); });
    return isStopping;
}

fs::path RemoteContext::pathFrom(Op op, const std::string& text) const {
    std::string path;
    links.ask(
        op, [&](MessageWriter& message) { message.text(text); }, [&](MessageReader& answer) { path = answer.text(); });
    return path;
}

void RemoteContext::writeResult(const std::string& fileName, const std::function<void(const fs::path&)>& writer) {
    const std::unique_ptr<ResultFile> file = beginResult(fileName);
    writer(file->path());
    file->keep();
}

std::unique_ptr<ResultFile> RemoteContext::beginResult(const std::string& fileName) {
    return std::make_unique<RemoteFile>(links, fileName);
}

std::vector<std::string> RemoteContext::namesIn(const std::string& folder, const std::string& pattern) const {
    std::vector<std::string> names;
    links.ask(
        Op::NamesIn,
        [&](MessageWriter& message) {
            message.text(folder);
            message.text(pattern);
        },
        [&](MessageReader& answer) { names = readTexts(answer); });
    return names;
}

void RemoteContext::skipFile(const fs::path& file, const std::string& reason) {
    links.ask(Op::SkipFile, [&](MessageWriter& message) {
        message.text(file.string());
        message.text(reason);
    });
}

void RemoteContext::warn(const std::string& sentence) {
    links.ask(Op::Warn, [&](MessageWriter& message) { message.text(sentence); });
}

void RemoteContext::tell(const std::string& text) {
    links.ask(Op::Tell, [&](MessageWriter& message) { message.text(text); });
}

RunRecord RemoteContext::record() const {
    RunRecord record;
    links.ask(
        Op::Record, [](MessageWriter&) {}, [&](MessageReader& answer) { record = readRunRecord(answer); });
    return record;
}

std::string RemoteContext::fact(const std::string& name, const std::function<std::string()>& find) {
    return task.isShared ? links.askForFact(name, find) : find();
}

}  // namespace velmorak::isolation
