#include "files/FileSurvey.h"

#include "files/CommonSchema.h"
#include "files/FileContext.h"
#include "files/FileFacts.h"

#include <velmorak/Ahead.h>
#include <velmorak/Parts.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <deque>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t maxNamesInMessage = 10;
constexpr std::size_t filesPerThread = 2;
constexpr std::size_t maxFilesOpen = 16;

/// Reads the columns of the files in order, while other threads read those of the next files.
class ColumnsAhead {
public:
    ColumnsAhead(const FileList& list, std::shared_ptr<const FileOpener> opener, RunContext& context);
    ColumnsAhead(const ColumnsAhead&) = delete;
    ColumnsAhead& operator=(const ColumnsAhead&) = delete;
    ~ColumnsAhead();

    /// @return the columns of the next file. @throws Failure, Stopped.
    FileColumns next();

private:
    FileColumns lookAt(const ListedFile& file) const;

    const FileList& list;
    const std::shared_ptr<const FileOpener> opener;
    RunContext& context;
    const std::size_t window;
    std::size_t begun = 0;
    std::size_t taken = 0;
    std::deque<std::shared_ptr<Ahead<FileColumns>>> ahead;
};

ColumnsAhead::ColumnsAhead(const FileList& list, std::shared_ptr<const FileOpener> opener, RunContext& context)
    : list(list),
      opener(std::move(opener)),
      context(context),
      window(context.isPreview() || runThreads() == 1 ? 0 : std::min(maxFilesOpen, filesPerThread * runThreads())) {}

ColumnsAhead::~ColumnsAhead() {
    for (const auto& look : ahead) {
        look->cancel();
    }
}

FileColumns ColumnsAhead::next() {
    for (; begun < std::min(taken + 1 + window, list.files.size()); ++begun) {
        ahead.push_back(Ahead<FileColumns>::begin([this, &file = list.files[begun]] { return lookAt(file); }));
    }
    ++taken;
    const std::shared_ptr<Ahead<FileColumns>> look = std::move(ahead.front());
    ahead.pop_front();
    return look->take();
}

FileColumns ColumnsAhead::lookAt(const ListedFile& file) const {
    if (context.isStopping()) {
        throw Stopped();
    }
    FileContext quiet(context, file.name, nullptr);
    return opener->columnsOf(file.path, quiet);
}

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

/// @throws Failure if the files have nothing in common, or lack what the user names.
void checkCommon(const FileSurvey& survey, const FileOpener& opener) {
    std::set<std::string> names(survey.leftOut.begin(), survey.leftOut.end());
    for (const ColumnInfo& column : survey.common.columns()) {
        names.insert(column.name);
    }
    opener.checkNames(names);
    if (!survey.leftOut.empty() && survey.common.size() == 0) {
        throw Failure("file", "the files have no column in common");
    }
}

/// Looks at the files of a list.
FileSurvey surveyOf(const FileList& list, const std::shared_ptr<const FileOpener>& opener,
                    const FileChainOptions& options, RunContext& context) {
    FileSurvey survey{{}, std::vector<bool>(list.files.size(), false)};
    CommonSchema common(options.takesCommonColumns);
    ColumnsAhead heads(list, opener, context);
    for (std::size_t i = 0; i < list.files.size() && !(context.isPreview() && !common.isEmpty()); ++i) {
        std::optional<FileColumns> columns;
        try {
            columns = heads.next();
        } catch (const Failure& failure) {
            if (!options.skipsDamaged || !isDamage(failure)) {
                throw;
            }
            survey.isSkipped[i] = true;
            survey.reasons.emplace_back(failure.what());
            context.skipFile(list.files[i].path, failure.what());
        }
        if (columns) {
            common.add(list.files[i].name, *columns);
        }
    }
    if (common.isEmpty()) {
        failForAll(list.files.size(), survey.reasons.front());
    }
    survey.common = Schema(common.columns());
    survey.leftOut = common.leftOut();
    if (!context.isPreview()) {
        checkCommon(survey, *opener);
    }
    return survey;
}

/// Reports the files that were skipped when the run was planned.
void reportSkipped(const FileSurvey& survey, const FileList& list, RunContext& context) {
    for (std::size_t i = 0, next = 0; i < list.files.size(); ++i) {
        if (survey.isSkipped[i]) {
            context.skipFile(list.files[i].path, survey.reasons[next++]);
        }
    }
}

}  // namespace

bool isDamage(const Failure& failure) {
    return failure.input().empty() || failure.input() == "file" || failure.input() == "object";
}

FileSurvey surveyFiles(const FileList& list, const std::shared_ptr<const FileOpener>& opener,
                       const FileChainOptions& options, RunContext& context) {
    std::optional<FileSurvey> made;
    const std::string bytes = factOf(context, "columns of the files", [&] {
        made = surveyOf(list, opener, options, context);
        return bytesOf(*made);
    });
    const bool isKnown = !made;
    FileSurvey survey = isKnown ? fileSurveyFrom(bytes, list.files.size()) : *std::move(made);
    if (isKnown) {
        reportSkipped(survey, list, context);
    }
    if (!survey.leftOut.empty() && !context.isPreview()) {
        context.warn("leaves out columns that differ between the files: " + listOf(survey.leftOut));
    }
    return survey;
}

}  // namespace velmorak
