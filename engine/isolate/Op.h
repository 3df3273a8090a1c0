#pragma once

#include <cstdint>

/// What the program and its helper processes say to each other.
namespace velmorak::isolation {

enum class Op : std::uint32_t {
    // Answers to everything below.
    Done,
    Error,
    // To a host, which loads one collection and forks helpers.
    Load,
    Fork,
    EndOf,
    Release,
    // To a helper, on its control socket.
    NewChannel,
    // To a helper: about its kind.
    Ports,
    Refusal,
    Files,
    Open,
    PrepareRows,
    PrepareTables,
    PrepareStates,
    Evaluate,
    // To a helper: about a reader or a stored table.
    SelectColumns,
    Next,
    Complete,
    Bookmark,
    Seek,
    ReadOnly,
    LeaveOut,
    Circumstances,
    OpenTable,
    // To a helper: about a row operation.
    MarkRowColumns,
    Bounds,
    Apply,
    Look,
    EndRows,
    // To a helper: about an accumulation and its states.
    MarkStateColumns,
    Fill,
    Merge,
    Save,
    LoadState,
    Finish,
    Drop,
    // From a helper, while it answers: what a context, arguments or results do.
    IsStopping,
    InputFile,
    Locate,
    CommandLineAida,
    NamesIn,
    SkipFile,
    Warn,
    Tell,
    Record,
    BeginResult,
    KeepResult,
    DropResult,
    Fact,
    FindFact,
    ArgumentNumber,
    ArgumentWithError,
    ArgumentInteger,
    ArgumentText,
    ArgumentValue,
    ArgumentIsWired,
    ArgumentHas,
    ArgumentWhyMissing,
    ArgumentSource,
    ArgumentSourceOutput,
    SetResult,
    LeaveResult,
    TableOpen,
    TableSelect,
    TableNext,
    TableDrop,
};

}  // namespace velmorak::isolation
