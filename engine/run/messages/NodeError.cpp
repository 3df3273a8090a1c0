#include "run/messages/NodeError.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

namespace velmorak {

namespace {

/// The message of a stream's error category says nothing useful.
std::string systemSentence(const std::system_error& error) {
    const bool isOfSystem =
        error.code().category() == std::generic_category() || error.code().category() == std::system_category();
    return isOfSystem ? error.code().message() : "a file could not be read or written";
}

/// Messages of the standard library name its functions, which means nothing to users.
std::string sentenceOf(const std::exception& error) {
    const std::string sentence = error.what();
    const std::string firstWord = sentence.substr(0, sentence.find(' '));
    const bool isOfLibrary = firstWord == sentence || firstWord.find("::") != std::string::npos;
    return isOfLibrary ? "internal error (" + (sentence.empty() ? "no reason given" : sentence) + ")" : sentence;
}

}  // namespace

NodeError errorOf(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const Stopped&) {
        return {"it stopped without being asked to", true};
    } catch (const Failure& failure) {
        return {failure.input().empty() ? failure.what() : "input \"" + failure.input() + "\": " + failure.what(),
                false, failure.cause()};
    } catch (const std::bad_alloc&) {
        return {"there was not enough memory"};
    } catch (const std::length_error&) {
        return {"there was not enough memory for something of that size"};
    } catch (const std::filesystem::filesystem_error& error) {
        return {error.path1().string() + ": " + error.code().message()};
    } catch (const std::system_error& error) {
        return {systemSentence(error)};
    } catch (const nlohmann::json::exception&) {
        return {"a JSON text is damaged, or lacks something"};
    } catch (const std::exception& error) {
        return {sentenceOf(error)};
    } catch (...) {
        return {"it failed without saying why"};
    }
}

}  // namespace velmorak
