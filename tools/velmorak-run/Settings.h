#pragma once

#include <QzManager.h>

#include <stdexcept>
#include <string>
#include <vector>

/// A mistake in the command line or its files, as a sentence.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An input and the value to set.
struct Setting {
    std::string plugin;
    std::string input;
    std::string value;
};

/// Reads PLUGIN.INPUT=VALUE. @throws UsageError
Setting settingOf(const std::string& text);

/// Sets the value. @throws UsageError with the nearest name when plug-in, input or choice is unknown, when the value
/// is refused, or when the input has a wire.
void apply(QzManager& manager, const Setting& setting);

/// Makes the plug-in the start. @throws UsageError with the nearest name.
void startAt(QzManager& manager, const std::string& plugin);

/// Applies the settings of one run of a scan, and records them after those of all runs.
/// @return the settings of the run as texts.
std::vector<std::string> applyPoint(QzManager& manager, const std::vector<std::string>& settings,
                                    const std::vector<Setting>& point);

/// PLUGIN.INPUT=VALUE of each.
std::vector<std::string> textsOf(const std::vector<Setting>& point);

/// Settings as the name of a folder; empty without any.
std::string folderNameOf(const std::vector<std::string>& settings);

/// One setting for each value of a scan: PLUGIN.INPUT=from:to:step, the end included where a step meets it, or
/// PLUGIN.INPUT=a,b,c, or a;b;c where a value has a comma. Separators in double quotes do not count. @throws UsageError
std::vector<Setting> scanOf(const std::string& text);

/// Every combination of the values of several scans, the last one changing fastest; at most 10000.
/// @throws UsageError
std::vector<std::vector<Setting>> pointsOf(const std::vector<std::string>& scans);
