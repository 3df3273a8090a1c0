#pragma once

/// Version of the headers in this folder: it counts up when one of them changes, so that a program and a library that
/// do not fit are told apart before the one calls the other.
inline constexpr unsigned qzVersion = 1;

/// Name under which a library exports the version that it is made for, as a constant unsigned with C linkage. One that
/// does not is taken at its word that it offers these headers.
inline constexpr const char* qzVersionName = "QzInterfaceVersion";
