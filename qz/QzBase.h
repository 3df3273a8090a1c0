#pragma once

#include "QzKind.h"

#include <cstdint>
#include <string>
#include <vector>

class QzManager;

/// One plug-in of the pipeline: its name, place, ports, values and bindings.
///
/// Lifetime: made by QzManager::CreatePlugin or ReadDocument, owned by the manager, gone after DeletePlugin.
/// Threads:  every operation is called on the editor's main thread, also while QzManager::Run executes on another.
/// Lengths:  canvas units; x to the right, y upwards.
/// The virtual operations keep their order: a library is replaced without compiling the editor again.
class QzBase {
public:
    /// One input port with its value and what feeds it.
    struct Input {
        std::string name;
        std::string description;         ///< Tooltip: meaning, unit, a line "Type: choice of a, b" or "file to read".
        std::string value;               ///< Current value as text; not used while a source feeds the input.
        QzBase* source = nullptr;        ///< Plug-in that feeds the input, null when unbound.
        std::uint32_t sourceOutput = 0;  ///< Position in source->Outputs(); meaningless when source is null.
    };

    /// One output port with everything that it feeds.
    struct Output {
        std::string name;
        std::string type;                 ///< "number", "text", "table", "histogram", ...
        std::string description;          ///< Tooltip: meaning, unit, a line with the type, columns of a table.
        std::vector<QzBase*> consumers;   ///< One entry for each input that is fed; a plug-in may stand here twice.
        std::vector<int> consumerInputs;  ///< Parallel to consumers: position in that consumer's Inputs().
    };

    struct Part;  ///< What only the library knows of a plug-in.

    QzBase(const QzBase&) = delete;
    QzBase& operator=(const QzBase&) = delete;

    /// Called on the sender: undoes the binding of the receiver's input to this output. Nothing happens when the
    /// receiver is null, a name is unknown, or that input is fed by something else.
    virtual void Disconnect(const std::string& output, QzBase* receiver, const std::string& input);

    /// Called on the receiver: binds its input to the sender's output, in place of what fed it before. Types and
    /// cycles are not judged here: such a binding is kept and reported by the run.
    /// @return false, with nothing changed, when the sender is null, belongs to another manager, or a name is unknown.
    virtual bool Connect(const std::string& input, QzBase* sender, const std::string& output);

    /// Stores the lower left corner of the box.
    virtual void SetPosition(float x, float y);
    virtual void GetPosition(float& x, float& y) const;

    /// Extent of the whole box with all its ports and its header of 30 units, also while collapsed.
    virtual void GetOuterExtent(float& width, float& height) const;

    /// Extent used to place the box: with all its ports, without the header.
    virtual void GetExtent(float& width, float& height) const;

    /// Extent of what is drawn: with the ports that are shown, without the header.
    virtual void GetDrawnExtent(float& width, float& height) const;

    /// True: all ports are shown. False: only those of the reduced lists.
    virtual void SetExpanded(bool isExpanded);
    virtual bool IsExpanded() const;

    /// Renames the plug-in; the member name follows. An empty name and a name in use by another plug-in are refused:
    /// the former name stays, and one line on standard error says why.
    virtual void SetName(const std::string& newName);
    virtual const std::string& GetName() const;

    /// Never null; valid as long as the manager.
    virtual const QzKind* GetKind() const;
    virtual QzManager* GetManager() const;

    /// All outputs in port order. The reference stays good as long as the plug-in; the records move when a value
    /// changes which ports there are.
    virtual std::vector<Output>& Outputs();

    /// Outputs shown while collapsed: those that feed something.
    virtual std::vector<Output*> ReducedOutputs();
    virtual std::vector<Output*> FullOutputs();

    /// All inputs in port order; see Outputs() for how long a record may be kept.
    virtual std::vector<Input>& Inputs();

    /// Inputs shown while collapsed: those that are fed.
    virtual std::vector<Input*> ReducedInputs();
    virtual std::vector<Input*> FullInputs();

    /// Position of the named input in Inputs(), -1 when there is none.
    virtual int InputIndex(const std::string& input) const;

    std::string name;         ///< Unique among the manager's plug-ins.
    std::string description;  ///< Tooltip of the box.

protected:
    explicit QzBase(Part* part);
    ~QzBase();

    Part* part;  ///< Made and freed by the library.
};
