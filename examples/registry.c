/* Works on a file that nobody here wrote: the keyboard registry that Debian ships. Opens it, finds elements,
 * reads texts and numbers by name, by path and into arrays, follows the cursor, edits, adds and removes
 * nodes, sets a schema reference, writes, and reads the result back.
 *
 * Usage: registry [FILE [RESULT]]   where FILE is xkb-data's base.xml or another of its structure */
#include <kalv/file_handling.h>

#include <stdio.h>
#include <stdlib.h>

static void heading(const char* text)
{
    printf("\n%s\n", text);
}

/* Ends the program where a step fails that has no reason to. */
static void expect_success(const char* step, long status)
{
    if (status < 0) {
        char message[KH_MESSAGE_SIZE];
        fprintf(stderr, "%s: %s\n", step, kh_basic_error_msg(status, message));
        exit(EXIT_FAILURE);
    }
}

static void show_cursor(long* fd)
{
    char path[1024];
    long status = 0;
    kh_tree_get_path(fd, path, &status);
    expect_success("the cursor's path", status);
    printf("  %-28s %s\n", "the cursor is at", path);
}

static void show_text(long* fd, const char* path)
{
    char* text = NULL;
    long status = 0;
    kh_tree_path_read_string_node_value(fd, path, &text, &status);
    expect_success(path, status);
    printf("  %-58s %s\n", path, text);
    free(text);
}

static void read_values(long* fd)
{
    char* text = NULL;
    double version = 0;
    long status = 0;

    heading("Reading");
    kh_tree_read_real_attribute(fd, "xkbConfigRegistry", "version", &version, &status);
    expect_success("version", status);
    printf("  %-28s %.1f\n", "registry version", version);

    kh_tree_read_string_element_value(fd, "vendor", &text, &status);
    expect_success("vendor", status);
    printf("  %-28s %s\n", "first vendor, by name", text);
    free(text);
    show_cursor(fd);

    show_text(fd, "/xkbConfigRegistry/layoutList/layout[2]/configItem/name");
    show_text(fd, "../description");
    show_cursor(fd);
}

static void read_arrays(long* fd)
{
    char** names = NULL;
    long count = 0;
    long status = 0;
    long i;

    heading("Reading arrays");
    kh_tree_path_read_string_node_array(fd, "/xkbConfigRegistry/layoutList/layout[*]/configItem/name", &names,
                                        &count, &status);
    expect_success("layout names", status);
    printf("  %ld layouts:", count);
    for (i = 0; i < count && i < 12; ++i)
        printf(" %s", names[i]);
    printf(" ...\n");
    for (i = 0; i < count; ++i)
        free(names[i]);
    free(names);
}

static void walk(long* fd)
{
    long depth = 0;
    long status = 0;
    long step;

    heading("Following the cursor");
    kh_tree_rewind(fd, &status);
    for (step = 0; step < 5; ++step) {
        char* name = NULL;
        kh_tree_go_to_next_element_node(fd, &status);
        kh_tree_get_current_element_name(fd, &name, &status);
        expect_success("next element", status);
        depth = kh_tree_distance_from_root(fd, global_current_status[*fd]->current);
        printf("  %*s%s\n", (int)(2 * depth), "", name);
        free(name);
    }
}

static void edit(long* fd)
{
    static const char* const codes[] = {"11", "22", "33"};
    long* read = NULL;
    long count = 0;
    long status = 0;
    long i;
    const double weight = 0.25;

    heading("Editing");
    kh_tree_remove_node(fd, "/xkbConfigRegistry/modelList", &status);
    expect_success("remove the models", status);
    printf("  removed the list of models\n");

    kh_tree_add_child(fd, "/xkbConfigRegistry", "survey", &status);
    kh_tree_add_attribute(fd, ".", "weight", &status);
    kh_tree_set_real_node_value(fd, "./@weight", &weight, "%.2f", &status);
    expect_success("add a list", status);
    for (i = 0; i < 3; ++i) {
        const long users = 1000 * (i + 1);
        kh_tree_add_child(fd, "/xkbConfigRegistry/survey", "layout", &status);
        kh_tree_add_child(fd, ".", "code", &status);
        kh_tree_set_string_node_value(fd, ".", codes[i], "%s", &status);
        kh_tree_add_next_sibling(fd, ".", "users", &status);
        kh_tree_set_integer_node_value(fd, ".", &users, "%ld", &status);
        expect_success("add an item", status);
    }
    show_cursor(fd);
    kh_tree_path_read_integer_node_array(fd, "/xkbConfigRegistry/survey/layout[*]/users", &read, &count,
                                         &status);
    expect_success("read the numbers back", status);
    printf("  %-28s", "numbers read back");
    for (i = 0; i < count; ++i)
        printf(" %ld", read[i]);
    printf("\n");
    free(read);
}

static void write_result(long* fd, const char* result)
{
    long mode = 0;
    long bytes;
    long status = 0;

    heading("Writing");
    kh_tree_rewind(fd, &status);
    KH_Set_Schema(fd, "xkb_registry_0101.XSD", &mode);
    bytes = kh_tree_write(fd, result, &status);
    expect_success("write", status);
    printf("  wrote %ld bytes to %s\n", bytes, result);
}

static void read_back(const char* result)
{
    long status = 0;
    long fd = kh_tree_init_parser(result, &status);

    heading("Reading the result");
    expect_success("open the result", status);
    show_text(&fd, "/xkbConfigRegistry/@schemaVersion");
    show_text(&fd, "/xkbConfigRegistry/survey/@weight");
    show_text(&fd, "/xkbConfigRegistry/survey/layout[3]/users");
    kh_tree_cleanup_parser(&fd, &status);
}

static void show_reports(long* fd)
{
    double number = 0;
    long status = 0;
    long none = 511;

    heading("What wrong input is answered with (verbose mode)");
    fflush(stdout);
    kh_verbose();
    kh_tree_path_read_real_node_value(fd, "/xkbConfigRegistry/layoutList/layout[2]/configItem/name", &number,
                                      &status);
    kh_tree_go_to_path_node(fd, "/registry/layoutList", &status);
    kh_tree_rewind(&none, &status);
    kh_silent();
}

int main(int count, char** arguments)
{
    const char* file = count > 1 ? arguments[1] : "/usr/share/X11/xkb/rules/base.xml";
    const char* result = count > 2 ? arguments[2] : "registry_result.xml";
    long status = 0;
    long fd;

    kh_check_library_version();
    fd = kh_tree_init_parser(file, &status);
    expect_success(file, status);
    printf("\nOpened %s as document %ld\n", file, fd);

    read_values(&fd);
    read_arrays(&fd);
    walk(&fd);
    edit(&fd);
    write_result(&fd, result);
    read_back(result);
    show_reports(&fd);

    kh_tree_cleanup_parser(&fd, &status);
    printf("\nDone.\n");
    return EXIT_SUCCESS;
}
