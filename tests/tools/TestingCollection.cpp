#include <velmorak/Kind.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <iostream>
#include <thread>

/// Kinds that do what a test of velmorak-run needs.
namespace {

using namespace velmorak;

class Fails : public Function {
public:
    std::string name() const override { return "Fails"; }
    std::string summary() const override { return "Fails."; }
    Ports ports(const ValueTexts&) const override {
        Ports ports;
        ports.outputs = {{.name = "number", .description = "Never given."}};
        return ports;
    }
    void evaluate(const Arguments&, Results&, RunContext&) const override { throw Failure("it was made to fail"); }
};

class Waits : public Function {
public:
    std::string name() const override { return "Waits"; }
    std::string summary() const override { return "Waits until the run is stopped."; }
    Ports ports(const ValueTexts&) const override { return {}; }
    void evaluate(const Arguments&, Results&, RunContext& context) const override {
        constexpr long maxPolls = 100'000'000;
        context.warn("it waits");
        for (long poll = 0; poll < maxPolls; ++poll) {
            if (context.isStopping()) {
                throw Stopped();
            }
            std::this_thread::yield();
        }
        throw Failure("nobody has stopped the run");
    }
};

/// Ignores a stop for a minute.
class IsDeaf : public Function {
public:
    std::string name() const override { return "IsDeaf"; }
    std::string summary() const override { return "Goes on for a minute."; }
    Ports ports(const ValueTexts&) const override { return {}; }
    void evaluate(const Arguments&, Results&, RunContext& context) const override {
        context.warn("it goes on");
        std::promise<void>().get_future().wait_for(std::chrono::minutes(1));
    }
};

/// Writes to standard output, which belongs to the results of the program.
class Prints : public Function {
public:
    std::string name() const override { return "Prints"; }
    std::string summary() const override { return "Prints to standard output."; }
    Ports ports(const ValueTexts&) const override { return {}; }
    void evaluate(const Arguments&, Results&, RunContext&) const override {
        std::cout << "from a stream" << std::endl;
        std::puts("from a function");
        std::fflush(stdout);
    }
};

/// Fails by an exception of the standard library.
class Overreaches : public Function {
public:
    std::string name() const override { return "Overreaches"; }
    std::string summary() const override { return "Looks behind the end of a list."; }
    Ports ports(const ValueTexts&) const override { return {}; }
    void evaluate(const Arguments&, Results&, RunContext&) const override { static_cast<void>(std::string().at(1)); }
};

class Crashes : public Function {
public:
    std::string name() const override { return "Crashes"; }
    std::string summary() const override { return "Ends the program."; }
    Ports ports(const ValueTexts&) const override { return {}; }
    void evaluate(const Arguments&, Results&, RunContext&) const override { std::abort(); }
};

}  // namespace

VELMORAK_COLLECTION(registry) {
    registry.group("Testing");
    registry.add(std::make_unique<Fails>());
    registry.add(std::make_unique<Waits>());
    registry.add(std::make_unique<IsDeaf>());
    registry.add(std::make_unique<Prints>());
    registry.add(std::make_unique<Overreaches>());
    registry.add(std::make_unique<Crashes>());
}
