#pragma once

#include <velmorak/FileFormat.h>

#include <memory>

/// Factories of the collection's kinds and file formats. What a kind does is described by its summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makeFitsTable();
std::unique_ptr<FileFormat> makeFitsFormat();

std::unique_ptr<Kind> makeHdf5Table();
std::unique_ptr<FileFormat> makeHdf5Format();

std::unique_ptr<Kind> makeNumpyTable();
std::unique_ptr<Kind> makeNumpyWriter();
std::unique_ptr<FileFormat> makeNumpyFormat();

std::unique_ptr<Kind> makeSqliteTable();
std::unique_ptr<FileFormat> makeSqliteFormat();

}  // namespace velmorak
