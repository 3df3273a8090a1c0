#pragma once

#include <velmorak/FileFormat.h>

#include <memory>

/// Factories for the formats that store tables column by column.
namespace velmorak {

std::unique_ptr<Kind> makeParquetTable();
std::unique_ptr<Kind> makeArrowTable();
std::unique_ptr<Kind> makeParquetWriter();

std::unique_ptr<FileFormat> makeParquetFormat();
std::unique_ptr<FileFormat> makeArrowFormat();

}  // namespace velmorak
