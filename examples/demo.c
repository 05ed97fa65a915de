/* The library's main job through its C interface: makes the product of demo.cc, byte by byte, reads it back,
 * corrects it, and takes its name apart.
 * Usage: demo_c [FOLDER]     the folder that the products are written to */
#include "measurement.h"

#include <kalv/file_handling.h>
#include <stdlib.h>
#include <string.h>

#define HEADER_PATH "/Earth_Observation_File/Earth_Observation_Header"
#define LIST_PATH "/Earth_Observation_File/Data_Block/List_of_Measurements"

static void heading(const char* text)
{
    printf("\n%s\n", text);
}

static void show(const char* what, const char* value)
{
    printf("  %-18s%s\n", what, value);
}

/* Ends the program where a step fails that has no reason to. */
static void expect_success(const char* step, long status)
{
    char message[KH_MESSAGE_SIZE];
    if (status == 0)
        return;
    fprintf(stderr, "%s: %s\n", step, kh_basic_error_msg(status, message));
    exit(EXIT_FAILURE);
}

/* The name of one version of the product, of at most 64 characters. */
static void make_name(int version, char* name)
{
    const long satellite = KH_Get_sat_id("Norquemba1");
    const long extension = KH_Get_file_extension_type(satellite);
    char instance[64];
    long status = 0;
    snprintf(instance, sizeof instance, "20320305T101500_20320305T102319_%04d", version);
    kh_create_filename(&satellite, "TEST", "GROUNDTEMP", instance, &extension, name, &status);
    expect_success("the name", status);
}

/* Where a product is written to; the caller's to free. */
static char* file_in(const char* folder, const char* name)
{
    const size_t size = strlen(folder) + strlen(name) + 2;
    char* file = (char*)malloc(size);
    if (file)
        snprintf(file, size, "%s/%s", folder, name);
    else
        expect_success("the file's name", KH_ERR_MEMORY);
    return file;
}

static void write_product(long* fd, const char* folder, const char* name)
{
    char* file = file_in(folder, name);
    long status = 0;
    kh_tree_write(fd, file, &status);
    expect_success(file, status);
    free(file);
    show("written", name);
}

static void set_text(long* fd, const char* path, const char* value)
{
    long status = 0;
    kh_tree_set_string_node_value(fd, path, value, "%s", &status);
    expect_success(path, status);
}

static void set_integer(long* fd, const char* path, long value)
{
    long status = 0;
    kh_tree_set_integer_node_value(fd, path, &value, "%ld", &status);
    expect_success(path, status);
}

static void set_real(long* fd, const char* path, double value, const char* format)
{
    long status = 0;
    kh_tree_set_real_node_value(fd, path, &value, format, &status);
    expect_success(path, status);
}

/* Both move the cursor to the new element, which is then ".". */
static void add_child(long* fd, const char* path, const char* name)
{
    long status = 0;
    kh_tree_add_child(fd, path, name, &status);
    expect_success(name, status);
}

static void add_next(long* fd, const char* name)
{
    long status = 0;
    kh_tree_add_next_sibling(fd, ".", name, &status);
    expect_success(name, status);
}

static void make(const char* folder, const char* name)
{
    long type = 3 * 10 + KH_EXTENSION_EOF; /* format version 3 */
    const long version = 1;
    long status = 0;
    long fd = kh_tree_create(&status);
    long i;
    expect_success("a new document", status);
    kh_tree_create_header(&fd, &type, &status);
    expect_success("the header", status);
    kh_tree_set_fixed_header_items(&fd, name, "Ground temperatures along the track", "Made up", "Norquemba1",
                                   "TEST", "GROUNDTEMP", "UTC=2032-03-05T10:15:00", "UTC=2032-03-05T10:23:19",
                                   &version, "Temperature processor", "demo", "1.0",
                                   "UTC=2032-03-05T12:00:00", &status);
    expect_success("the header's items", status);
    kh_tree_set_fixed_header_item(&fd, "KVSTD_Version", "1.0", &status);
    expect_success("the standard's version", status);
    add_child(&fd, HEADER_PATH "/Variable_Header", "Orbit");
    set_integer(&fd, ".", 4711);

    add_child(&fd, "/Earth_Observation_File", "Data_Block");
    set_text(&fd, "./@type", "xml");
    add_child(&fd, ".", "List_of_Measurements");
    set_integer(&fd, "./@count", measurement_count);
    for (i = 0; i < measurement_count; ++i) {
        const struct measurement one = measurement_at(i);
        add_child(&fd, LIST_PATH, "Measurement");
        add_child(&fd, ".", "Time");
        set_text(&fd, ".", one.time);
        add_next(&fd, "Latitude");
        set_real(&fd, ".", one.latitude, "%.4f");
        add_next(&fd, "Longitude");
        set_real(&fd, ".", one.longitude, "%.4f");
        add_next(&fd, "Temperature");
        set_real(&fd, ".", one.temperature, "%.2f");
        set_text(&fd, "./@unit", "K");
        add_next(&fd, "Quality");
        set_integer(&fd, ".", one.quality);
    }
    write_product(&fd, folder, name);
    kh_tree_cleanup_parser(&fd, &status);
    printf("  %-18s%d\n", "values", 5 * measurement_count);
}

static void list_header(long* fd)
{
    static const char* const items[] = {
        "File_Name", "File_Description", "Notes",           "Mission",      "File_Class",
        "File_Type", "Validity_Start",   "Validity_Stop",   "File_Version", "KVSTD_Version",
        "System",    "Creator",          "Creator_Version", "Creation_Date"};
    size_t i;
    for (i = 0; i < sizeof items / sizeof items[0]; ++i) {
        char number[21]; /* receives File_Version; all others are fresh blocks */
        char* value = number;
        long status = 0;
        kh_tree_get_fixed_header_item(fd, items[i], &value, &status);
        expect_success(items[i], status);
        show(items[i], value);
        if (value != number)
            free(value);
    }
}

static void read_arrays(long* fd)
{
    char** times = NULL;
    double* temperatures = NULL;
    long* qualities = NULL;
    long count = 0;
    long status = 0;
    double coldest, warmest, sum = 0;
    long clouds = 0;
    long i;
    kh_tree_path_read_string_node_array(fd, LIST_PATH "/Measurement[*]/Time", &times, &count, &status);
    expect_success("times", status);
    printf("  %-18s%ld\n", "measurements", count);
    printf("  %-18s%s, %s\n", "first, last", times[0], times[count - 1]);
    for (i = 0; i < count; ++i)
        free(times[i]);
    free(times);

    kh_tree_path_read_real_node_array(fd, LIST_PATH "/Measurement[*]/Temperature", &temperatures, &count,
                                      &status);
    expect_success("temperatures", status);
    coldest = warmest = temperatures[0];
    for (i = 0; i < count; ++i) {
        coldest = temperatures[i] < coldest ? temperatures[i] : coldest;
        warmest = temperatures[i] > warmest ? temperatures[i] : warmest;
        sum += temperatures[i];
    }
    free(temperatures);
    printf("  %-18s%.2f\n", "coldest, K", coldest);
    printf("  %-18s%.2f\n", "warmest, K", warmest);
    printf("  %-18s%.2f\n", "mean, K", sum / (double)count);

    kh_tree_read_integer_element_array(fd, "Quality", &qualities, &count, &status); /* by name */
    expect_success("qualities", status);
    for (i = 0; i < count; ++i)
        clouds += qualities[i] == 1;
    free(qualities);
    printf("  %-18s%ld\n", "under clouds", clouds);
}

/* Corrects one measurement, and writes the product as its second version. */
static void correct(long* fd, const char* folder, const char* name)
{
    char path[256];
    char* before = NULL;
    double temperature = 0;
    long status = 0;
    kh_tree_find_string_value_path(fd, LIST_PATH "/Measurement[*]/Time", "UTC=2032-03-05T10:18:20", path,
                                   &status);
    expect_success("the time", status);
    show("found at", path);
    kh_tree_go_to_path_node(fd, path, &status);
    expect_success(path, status);
    kh_tree_path_read_string_node_value(fd, "../Temperature", &before, &status);
    expect_success("the temperature", status);
    show("temperature, K", before);
    free(before);
    set_real(fd, ".", 264.5, "%.2f"); /* the cursor is on it */
    kh_tree_path_read_real_node_value(fd, ".", &temperature, &status);
    expect_success("the temperature", status);
    printf("  %-18s%.2f\n", "set to", temperature);

    kh_tree_set_fixed_header_item(fd, "File_Name", name, &status);
    expect_success("the file's name", status);
    kh_tree_set_fixed_header_item(fd, "File_Version", "2", &status);
    expect_success("the file's version", status);
    write_product(fd, folder, name);
}

static void split(const char* name)
{
    char file_class[5] = "";
    char file_type[11] = "";
    char instance[43] = "";
    long satellite = 0;
    long status = 0;
    kh_read_filename_items(name, &satellite, file_class, file_type, instance, &status);
    expect_success(name, status);
    printf("  %-18s%ld\n", "satellite", satellite);
    show("class", file_class);
    show("type", file_type);
    show("instance", instance);
}

static void show_failure(const char* input, long status)
{
    char message[KH_MESSAGE_SIZE];
    printf("  %-30s%3ld  %s\n", input, status, kh_basic_error_msg(status, message));
}

static void give_wrong_input(long* fd)
{
    static const char time[] = LIST_PATH "/Measurement[7]/Time";
    const long satellite = 129;
    const long extension = KH_EXTENSION_EOF;
    const long count = 499;
    long type = 30;
    char name[65];
    double number = 0;
    long status = 0;
    kh_tree_go_to_path_node(fd, "/Earth_Observation_File/Other_Block", &status);
    show_failure("a path to nowhere", status);
    kh_tree_go_to_path_node(fd, "/Orvanto_File", &status);
    show_failure("another file's root", status);
    kh_tree_path_read_real_node_value(fd, time, &number, &status);
    show_failure("a time for a number", status);
    kh_tree_set_integer_node_value(fd, LIST_PATH "/@count", &count, "%s", &status);
    show_failure("a format for texts", status);
    kh_tree_create_header(fd, &type, &status);
    show_failure("a second header", status);
    kh_create_filename(&satellite, "TESTED", "GROUNDTEMP", "1", &extension, name, &status);
    show_failure("a class of six letters", status);
    kh_tree_init_parser("no_such_file.EOF", &status);
    show_failure("a file that is not there", status);

    heading("The report of one of them, as verbose mode prints it on standard error");
    fflush(stdout);
    kh_verbose();
    kh_tree_path_read_real_node_value(fd, time, &number, &status);
    kh_silent();
}

int main(int count, char** arguments)
{
    const char* folder = count > 1 ? arguments[1] : ".";
    char name[65];
    char corrected[65];
    char* file;
    long status = 0;
    long fd;

    printf("The same product file, through the C interface\n");
    heading("Its name");
    make_name(1, name);
    make_name(2, corrected);
    show("made", name);
    heading("Its header and a block of data");
    make(folder, name);

    file = file_in(folder, name);
    fd = kh_tree_init_parser(file, &status);
    expect_success(file, status);
    free(file);
    heading("Read back: the header");
    list_header(&fd);
    heading("Read back: arrays");
    read_arrays(&fd);
    heading("A value found, and its neighbour changed");
    correct(&fd, folder, corrected);
    heading("The name taken apart");
    split(corrected);
    heading("What wrong input is answered with");
    give_wrong_input(&fd);
    kh_tree_cleanup_parser(&fd, &status);
    return EXIT_SUCCESS;
}
