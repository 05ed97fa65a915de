/* The recipes of the cookbook in C, each in a function of its own.
 * Usage: cookbook_c FILE */
#include <kalv/file_handling.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define PASSES "/Orvanto_File/Data_Block/List_of_Passes"

/* What went wrong, whole: the function, the file, path or value, and the place in a file that is not well-formed. */
static void print_last_report(void)
{
    const long length = KH_last_report(NULL, 0);
    char* text = malloc((size_t)length + 1);
    if (text != NULL) {
        KH_last_report(text, length + 1);
        printf("%s\n", text);
        free(text);
    }
}

/* A text, which is the caller's to free, also beside KH_ERR_NO_VALUE. */
static void print_mission(long* fd)
{
    char* mission = NULL;
    long status = 0;
    kh_tree_path_read_string_node_value(fd, "/Orvanto_File/Orvanto_Header/Fixed_Header/Mission", &mission,
                                        &status);
    if (status == 0)
        printf("%s\n", mission);
    else if (status == KH_ERR_NO_VALUE)
        printf("(no mission)\n");
    free(mission);
}

/* An array of texts: the texts and the array are the caller's to free, also after a failure. */
static void print_tracks(long* fd)
{
    char** tracks = NULL;
    long count = 0;
    long status = 0;
    long i;
    kh_tree_path_read_string_node_array(fd, PASSES "/Pass[*]/Track", &tracks, &count, &status);
    for (i = 0; i < count; ++i) {
        printf("%s\n", tracks[i]);
        free(tracks[i]);
    }
    free(tracks);
}

/* Every element of a name, one after the other: null stands for the name of the read before. */
static long sum_of_orbits(long* fd)
{
    long sum = 0;
    long orbit = 0;
    long status = 0;
    kh_tree_rewind(fd, &status);
    for (kh_tree_read_integer_element_value(fd, "Orbit", &orbit, &status); status == 0;
         kh_tree_read_integer_element_value(fd, NULL, &orbit, &status))
        sum += orbit;
    return status == KH_ERR_NOT_FOUND ? sum : -1;
}

/* The tree of elements. */
static void print_tree(long* fd)
{
    long status = 0;
    kh_tree_go_to_path_node(fd, PASSES, &status);
    while (status == 0) {
        char* name = NULL;
        const long depth = kh_tree_distance_from_root(fd, global_current_status[*fd]->current);
        kh_tree_get_current_element_name(fd, &name, &status);
        printf("%*s%s\n", (int)(2 * depth), "", status == 0 ? name : "");
        free(name);
        kh_tree_go_to_next_element_node(fd, &status);
    }
}

/* The namespaces in scope at the root. */
static void print_namespaces(long* fd)
{
    char** prefixes = NULL;
    char** uris = NULL;
    long count = 0;
    long status = 0;
    long i;
    kh_tree_rewind(fd, &status);
    kh_tree_get_namespace(fd, NULL, &count, &prefixes, &uris, &status);
    for (i = 0; i < count; ++i) {
        printf("'%s' is %s\n", prefixes[i], uris[i]);
        free(prefixes[i]);
        free(uris[i]);
    }
    free(prefixes);
    free(uris);
}

/* A schema reference on the root: the version is taken from the last digits of the name. */
static void set_schema(long* fd)
{
    const long mode = 0;
    long status = 0;
    kh_tree_rewind(fd, &status);
    KH_Set_Schema(fd, "Sea_Heights_0102.XSD", &mode);
}

/* A document without a file: from memory, and into memory. */
static void edit_in_memory(const char* text)
{
    const long count = 2;
    char* result = NULL;
    long size = 0;
    long status = 0;
    long fd = kh_tree_init_memory(text, (long)strlen(text), &status);
    if (status == 0) {
        kh_tree_set_integer_node_value(&fd, "/List/@count", &count, "%ld", &status);
        if (status == 0)
            kh_tree_write_memory(&fd, &result, &size, &status);
        kh_tree_cleanup_parser(&fd, NULL);
    }
    if (status == 0)
        fwrite(result, 1, (size_t)size, stdout);
    else
        print_last_report();
    free(result);
}

int main(int count, char** arguments)
{
    long status = 0;
    long fd;

    if (count != 2)
        return 2;
    if (KH_Get_lib_version_number() < KH_VERSION_NUMBER) {
        fprintf(stderr, "the library is older than version %s\n", KH_VERSION_TEXT);
        return 1;
    }
    fd = kh_tree_init_parser(arguments[1], &status);
    if (status != 0) {
        print_last_report();
        return 1;
    }
    print_mission(&fd);
    print_tracks(&fd);
    printf("%ld\n", sum_of_orbits(&fd));
    print_tree(&fd);
    set_schema(&fd);
    print_namespaces(&fd);
    kh_tree_cleanup_parser(&fd, &status);

    edit_in_memory("<List count='1'/>");
    edit_in_memory("<List>\n  <Item>\n</List>");
    return 0;
}
