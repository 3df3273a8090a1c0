#pragma once

#include <velmorak/Table.h>

#include <cstddef>

namespace velmorak {

/// The columns of the events below: a number, five lists for particles and one for jets.
const Schema& events();

/// Three events with three, no and two particles; two, one and three jets.
Chunk someEvents();

/// Events with lists of random lengths, the same in each call.
Chunk manyEvents(std::size_t rows);

/// The rows from one on as a chunk of its own.
Chunk rowsFrom(const Chunk& all, std::size_t first);

}  // namespace velmorak
