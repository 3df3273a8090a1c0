#include "GraphFixture.h"

#include <algorithm>
#include <map>
#include <random>

namespace velmorak::test {
namespace {

/// The pipeline as its user understands it: for each input that is fed, what feeds it.
using Model = std::map<std::pair<std::string, std::string>, std::pair<std::string, std::string>>;

class RandomEdits : public Graph {
protected:
    std::mt19937 random;
    Model model;

    std::size_t below(std::size_t limit) { return random() % limit; }
    QzBase& anyNode() { return *manager.plugins[below(manager.plugins.size())]; }

    void create() { add(below(2) == 0 ? "Pair" : "Letters", "N"); }

    void remove() {
        const std::string name = anyNode().name;
        manager.DeletePlugin(manager.IndexOf(name));
        std::erase_if(model, [&](const auto& each) { return each.first.first == name || each.second.first == name; });
    }

    void connect() {
        QzBase& sender = anyNode();
        QzBase& receiver = anyNode();
        if (sender.Outputs().empty()) {
            return;
        }
        const std::string from = sender.Outputs()[below(sender.Outputs().size())].name;
        const std::string to = receiver.Inputs()[below(receiver.Inputs().size())].name;
        ASSERT_TRUE(receiver.Connect(to, &sender, from));
        model[{receiver.name, to}] = {sender.name, from};
    }

    void disconnect() {
        if (model.empty()) {
            return;
        }
        const auto at = std::next(model.begin(), static_cast<std::ptrdiff_t>(below(model.size())));
        node(at->second.first).Disconnect(at->second.second, &node(at->first.first), at->first.second);
        model.erase(at);
    }

    void rename() {
        QzBase& renamed = anyNode();
        const std::string before = renamed.name;
        renamed.SetName("R" + std::to_string(random()));
        Model after;
        const auto renewed = [&](std::pair<std::string, std::string> port) {
            if (port.first == before) {
                port.first = renamed.name;
            }
            return port;
        };
        for (const auto& [to, from] : model) {
            after[renewed(to)] = renewed(from);
        }
        model = after;
    }

    /// Ports come, go and change places.
    void changePorts() {
        QzBase& changed = anyNode();
        if (changed.InputIndex("letters") < 0) {
            return;
        }
        std::string letters = "abcdef";
        std::ranges::shuffle(letters, random);
        letters.resize(below(6));
        setValue(changed.name, "letters", letters);
        const auto isGone = [&](const std::string& plugin, const std::string& port) {
            return plugin == changed.name && port != "letters" && letters.find(port) == std::string::npos;
        };
        std::erase_if(model, [&](const auto& each) {
            return isGone(each.first.first, each.first.second) || isGone(each.second.first, each.second.second);
        });
    }

    void edit() {
        const std::size_t choice = below(20);
        if (manager.plugins.empty() || (choice < 2 && manager.plugins.size() < 40)) {
            create();
        } else if (choice < 3) {
            remove();
        } else if (choice < 12) {
            connect();
        } else if (choice < 15) {
            disconnect();
        } else if (choice < 16) {
            rename();
        } else if (choice < 17) {
            manager.SetStart(static_cast<int>(below(manager.plugins.size())));
        } else {
            changePorts();
        }
    }

    Model asBound() {
        Model bound;
        for (QzBase* each : manager.plugins) {
            for (const QzBase::Input& fed : each->Inputs()) {
                if (fed.source) {
                    bound[{each->name, fed.name}] = {fed.source->name, fed.source->Outputs().at(fed.sourceOutput).name};
                }
            }
        }
        return bound;
    }
};

TEST_F(RandomEdits, bothConsumerListsStayInStepWithAModel) {
    const auto seed = static_cast<std::mt19937::result_type>(testing::UnitTest::GetInstance()->random_seed() + 1);
    std::cout << "seed " << seed << "\n";
    random.seed(seed);
    for (int i = 0; i < 5000; ++i) {
        edit();
        expectInStep(manager);
        if (HasFatalFailure()) {
            FAIL() << "after edit " << i << " with seed " << seed;
        }
        ASSERT_EQ(asBound(), model) << "after edit " << i << " with seed " << seed;
    }
    const std::string text = manager.DocumentText();
    QzManager again("QzAnalysisFactory");
    again.ReadDocument(folder.write("again.zedra", text));
    EXPECT_EQ(again.DocumentText(), text);
}

}  // namespace
}  // namespace velmorak::test
