// What the package is compared with: opens a file, reads an array of reals and releases the file. Prints the
// seconds of the processor that each repetition took, in all and for the read alone, and at the end the sum of
// the values.
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <kalv/XmlFile.h>
#include <numeric>
#include <vector>

namespace {

double processor_time()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 4) {
        std::cerr << "usage: kalv_python_bench FILE PATH REPETITIONS\n";
        return 2;
    }
    double sum = 0;
    std::cout << std::setprecision(17);
    const long repetitions = std::atol(arguments[3]);
    for (long repetition = 0; repetition <= repetitions; ++repetition) {
        const double begin = processor_time();
        KALV::XmlFile file(arguments[1]);
        const double open = processor_time();
        std::vector<double> values;
        file.getPathArrayAsReal(arguments[2], values);
        const double read = processor_time();
        file.clean();
        const double end = processor_time();
        if (repetition > 0) // the first one warms up
            std::cout << end - begin << ' ' << read - open << '\n';
        sum = std::accumulate(values.begin(), values.end(), 0.0);
    }
    std::cout << sum << '\n';
}
