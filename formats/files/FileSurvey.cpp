#include "files/FileSurvey.h"

#include <velmorak/Ahead.h>
#include "files/FileContext.h"

#include <velmorak/Text.h>

#include <algorithm>
#include <deque>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t maxNamesInMessage = 10;
constexpr std::size_t looksAheadPerThread = 2;

/// Looks at the files in order, while other threads look at the next ones.
class Looks {
public:
    Looks(const FileList& list, std::shared_ptr<const FileOpener> opener, RunContext& context)
        : list(list),
          opener(std::move(opener)),
          context(context),
          window(context.isPreview() || runThreads() == 1 ? 0 : looksAheadPerThread * runThreads()) {}
    Looks(const Looks&) = delete;
    Looks& operator=(const Looks&) = delete;
    ~Looks() {
        for (const auto& look : ahead) {
            look->cancel();
        }
    }

    /// @return the columns of the next file. @throws Failure, Stopped.
    FileColumns next() {
        for (; begun < std::min(taken + 1 + window, list.files.size()); ++begun) {
            ahead.push_back(Ahead<FileColumns>::begin([this, &file = list.files[begun]] { return lookAt(file); }));
        }
        ++taken;
        const std::shared_ptr<Ahead<FileColumns>> look = std::move(ahead.front());
        ahead.pop_front();
        return look->take();
    }

private:
    FileColumns lookAt(const ListedFile& file) const {
        if (context.isStopping()) {
            throw Stopped();
        }
        FileContext quiet(context, file.name, nullptr);
        return opener->columnsOf(file.path, quiet);
    }

    const FileList& list;
    const std::shared_ptr<const FileOpener> opener;
    RunContext& context;
    const std::size_t window;
    std::size_t begun = 0;
    std::size_t taken = 0;
    std::deque<std::shared_ptr<Ahead<FileColumns>>> ahead;
};

std::string listOf(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < std::min(maxNamesInMessage, names.size()); ++i) {
        text += (i == 0 ? "" : ", ") + velmorak::quoted(names[i]);
    }
    if (names.size() > maxNamesInMessage) {
        text += " and " + std::to_string(names.size() - maxNamesInMessage) + " more";
    }
    return text;
}

[[noreturn]] void failForAll(std::size_t files, const std::string& reason) {
    throw Failure("file", files == 1
                              ? reason
                              : "none of the " + std::to_string(files) + " files can be read; the first: " + reason);
}

Schema commonOf(const CommonSchema& common, const FileOpener& opener, RunContext& context) {
    Schema columns(common.columns());
    if (context.isPreview()) {
        return columns;
    }
    std::set<std::string> names(common.leftOut().begin(), common.leftOut().end());
    for (const ColumnInfo& column : columns.columns()) {
        names.insert(column.name);
    }
    opener.checkNames(names);
    if (!common.leftOut().empty() && columns.size() == 0) {
        throw Failure("file", "the files have no column in common");
    }
    if (!common.leftOut().empty()) {
        context.warn("leaves out columns that differ between the files: " + listOf(common.leftOut()));
    }
    return columns;
}

}  // namespace

bool isDamage(const Failure& failure) {
    return failure.input().empty() || failure.input() == "file" || failure.input() == "object";
}

FileSurvey surveyFiles(const FileList& list, const std::shared_ptr<const FileOpener>& opener,
                       const FileChainOptions& options, RunContext& context) {
    FileSurvey survey{{}, std::vector<bool>(list.files.size(), false)};
    CommonSchema common(options.takesCommonColumns);
    Looks looks(list, opener, context);
    std::string firstReason;
    for (std::size_t i = 0; i < list.files.size() && !(context.isPreview() && !common.isEmpty()); ++i) {
        std::optional<FileColumns> columns;
        try {
            columns = looks.next();
        } catch (const Failure& failure) {
            if (!options.skipsDamaged || !isDamage(failure)) {
                throw;
            }
            survey.isSkipped[i] = true;
            firstReason = firstReason.empty() ? failure.what() : firstReason;
            context.skipFile(list.files[i].path, failure.what());
        }
        if (columns) {
            common.add(list.files[i].name, *columns);
        }
    }
    if (common.isEmpty()) {
        failForAll(list.files.size(), firstReason);
    }
    survey.common = commonOf(common, *opener, context);
    return survey;
}

}  // namespace velmorak
