#pragma once

#include "QzBase.h"
#include "QzKind.h"

#include <cstdint>
#include <string>
#include <vector>

/// The analysis library: catalogue of kinds and examples, the pipeline, its document and its run.
///
/// Lifetime: one for each program run; outlives everything that holds a QzBase.
/// Threads:  every operation is called on the editor's main thread, but for Run, which executes on a worker thread.
///           While it does, all others may still be called.
/// Errors:   nothing is thrown. What goes wrong is said in one line on standard error.
/// The virtual operations keep their order: a library is replaced without compiling the editor again.
class QzManager {
public:
    struct Part;  ///< What only the library knows.

    /// @param factory name of the function that a collection's shared object offers to register its kinds. A shared
    ///                object without it is reported and skipped.
    explicit QzManager(const std::string& factory);

    /// Asks a run that is going on to end, waits for it, and frees every plug-in.
    ~QzManager();

    QzManager(const QzManager&) = delete;
    QzManager& operator=(const QzManager&) = delete;

    /// Names the AIDA file that readers without a file of their own use.
    /// @return false when the file is missing or cannot be read, which is also said on standard error.
    bool loadAIDA(const std::string& file);

    /// Sizes, in points, from which the width of a box is estimated: that of the ports' names and that of the title.
    void SetFontSize(int portSize, int titleSize);

    /// Called once at start with an empty list. Nothing depends on it.
    static void GetListOfPlugins(const std::vector<std::string>& names);

    /// All kinds; the same list, in the same order, from the first manager on until the program ends.
    static const std::vector<QzKind>& GetPlugins();

    /// All examples; as GetPlugins().
    static const std::vector<QzExample>& GetExamples();

    /// Appends the plug-ins of a document to the list, bound as they were. All or nothing: a document that cannot be
    /// read adds nothing and is reported with line and reason. Names that are taken get a number.
    virtual void ReadDocument(const std::string& file);

    /// Remembers where the document is kept.
    virtual void SetFileName(const std::string& file);

    /// Forgets all results; a run that is going on is asked to end.
    virtual void Reset();

    /// The whole pipeline as text: what ReadDocument reads, and the content of the document's file.
    virtual std::string DocumentText();

    /// Removes and frees a plug-in; whatever it fed or was fed by is unbound. An index out of range does nothing.
    virtual void DeletePlugin(int index);

    /// Moves the plug-in to the front of the list. The others keep their order. An index out of range does nothing.
    virtual void SetStart(const int& index);

    /// Appends a plug-in of a kind. A name that is in use gets a number.
    /// @return never null for a number below GetPlugins().size(); null, after a line on standard error, for others.
    virtual QzBase* CreatePlugin(std::uint16_t kind, const std::string& uniqueName);

    /// Sets an input's value from text. Text that the input's type cannot use is refused: the former value stays and
    /// one line on standard error says why. An index or position out of range does nothing. May change which ports
    /// the plug-in has.
    virtual void SetInputValue(int index, int input, const std::string& value);

    /// Runs the start plug-in and all that is downstream of it; returns when it has ended or has been stopped. A call
    /// while another is going on waits for that one to end first.
    virtual void Run();

    /// Asks the run that is going on, or one whose thread is there but has not begun it, to end soon, and returns at
    /// once. Without either, nothing happens, and the next run is not affected. Safe on any thread.
    virtual void Stop();

    /// @return the plug-in of that name, or null.
    virtual QzBase* FindPlugin(const std::string& name);

    /// @return position of the named plug-in in the list (0 is the start plug-in), or -1.
    virtual int IndexOf(const std::string& name);

    std::vector<QzBase*>
        plugins;           ///< All plug-ins; element 0 is the start. Read by the editor, changed by the library.
    std::string fileName;  ///< Where the document is kept; empty until SetFileName or ReadDocument says so.

private:
    [[maybe_unused]] Part* part;  ///< Made and freed by the library.
};
