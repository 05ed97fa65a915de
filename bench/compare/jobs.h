// The jobs by subject. Each adds its lines to the comparison.
#ifndef KALV_BENCH_JOBS_H
#define KALV_BENCH_JOBS_H

#include "comparison.h"
#include "files.h"

namespace bench {

void compare_memory(Comparison& comparison, const Files& files);        ///< before all others: forks
void compare_opening_alone(Comparison& comparison, const Files& files); ///< while no document is open
void compare_opening(Comparison& comparison, const Files& files);
void compare_arrays(Comparison& comparison, const Files& files);
void compare_paths(Comparison& comparison, const Files& files);
void compare_searches(Comparison& comparison, const Files& files);
void compare_conversions(Comparison& comparison);
void compare_building(Comparison& comparison);
void compare_writing(Comparison& comparison, const Files& files);
void compare_methods(Comparison& comparison, const Files& files);
void compare_threads(Comparison& comparison, const Files& files);

} // namespace bench

#endif
