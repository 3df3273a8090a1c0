#include "Problem.h"

#include <velmorak/Failure.h>

#include <new>

namespace velmorak {

Problem problemOf(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const Stopped&) {
        return {"it stopped without being asked to", true};
    } catch (const Failure& failure) {
        return {failure.input().empty() ? failure.what() : "input \"" + failure.input() + "\": " + failure.what()};
    } catch (const std::bad_alloc&) {
        return {"there was not enough memory"};
    } catch (const std::exception& error) {
        return {error.what()};
    } catch (...) {
        return {"it failed without saying why"};
    }
}

}  // namespace velmorak
