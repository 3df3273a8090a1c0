#pragma once

#include <QzManager.h>

struct QzBase::Part {
    QzManager* manager = nullptr;
    const QzKind* kind = nullptr;
    float x = 0, y = 0, width = 0;
    bool isExpanded = true;
    std::vector<Input> inputs;
    std::vector<Output> outputs;
};

namespace recording {

/// A plug-in that the manager can create and destroy.
class Plugin final : public QzBase {
public:
    Plugin(QzManager* manager, std::size_t kind, const std::string& uniqueName);

    /// Removes all bindings into and out of this plug-in.
    void unbindAll();

    void unbind(Input& input);
    void setValue(int input, const std::string& value);
};

}  // namespace recording
