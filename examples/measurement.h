/* What the products of demo.cc and demo.c hold: ground temperatures along a piece of an orbit, made up. */
#ifndef KALV_EXAMPLES_MEASUREMENT_H
#define KALV_EXAMPLES_MEASUREMENT_H

#include <stdio.h>

enum { measurement_count = 500 };

struct measurement {
    char time[32];
    double latitude;
    double longitude;
    double temperature;
    long quality; /* 0 clear sky, 1 clouds */
};

/* One a second, from 10:15:00 on. */
static inline struct measurement measurement_at(long index)
{
    struct measurement made;
    const long second = index % 60;
    const long minute = 15 + index / 60;
    made.time[0] = '\0';
    snprintf(made.time, sizeof made.time, "UTC=2032-03-05T10:%02d:%02d", (int)minute, (int)second);
    made.latitude = 71.5 - 0.0625 * (double)index;
    made.longitude = 12.25 - 0.03125 * (double)index;
    made.temperature = 251.5 + 0.0625 * (double)index + 0.25 * (double)(index * 37 % 11);
    made.quality = index * 37 % 11 < 3;
    return made;
}

#endif
