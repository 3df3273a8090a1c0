#include <velmorak/Fit.h>

#include <iostream>
#include <sstream>

#include <velmorak/Value.h>

/// Fits the problems on standard input, for check_fits.py: for each problem the model, the method, the start values,
/// and lines of low, high, y and error up to an empty one. Writes a line of values and errors for each.
int main() {
    using namespace velmorak;
    for (std::string model; std::getline(std::cin, model);) {
        FitOptions options;
        FitData data;
        std::string line;
        std::getline(std::cin, line);
        options.method = line == "likelihood" ? FitOptions::Method::Likelihood : FitOptions::Method::ChiSquare;
        std::getline(std::cin, line);
        options.parameters = readFitParameters(line);
        while (std::getline(std::cin, line) && !line.empty()) {
            std::istringstream words(line);
            words.imbue(std::locale::classic());
            FitData::Entry entry;
            words >> entry.low >> entry.high >> entry.y >> entry.error;
            data.entries.push_back(entry);
        }
        const FitResult result = fit(FitModel(model), data, options);
        for (const double value : result.values) {
            std::cout << textOf(value) << ' ';
        }
        for (const double error : result.errors) {
            std::cout << textOf(error) << ' ';
        }
        std::cout << textOf(result.chi2) << '\n';
    }
    return 0;
}
