/* Reads a product file through the C interface: a header item, single values and arrays.
 * Usage: read_product_c FILE */
#include <kalv/file_handling.h>

#include <stdio.h>
#include <stdlib.h>

#define PASSES "/Orvanto_File/Data_Block/List_of_Passes"

int main(int count, char** arguments)
{
    char* mission = NULL;
    long orbit = 0;
    double* heights = NULL;
    long height_count = 0;
    long status = 0;
    long fd;
    long i;

    if (count != 2)
        return 2;
    fd = kh_tree_init_parser(arguments[1], &status);
    if (status == 0) {
        /* Each call sets the status anew: look at it after each one whose failure matters. */
        kh_tree_get_fixed_header_item(&fd, "Mission", &mission, &status);
        if (status == 0)
            kh_tree_path_read_integer_node_value(&fd, PASSES "/Pass[3]/Orbit", &orbit, &status);
        if (status == 0)
            kh_tree_path_read_real_node_array(&fd, PASSES "/Pass[*]/Height", &heights, &height_count,
                                              &status);
        kh_tree_cleanup_parser(&fd, NULL);
    }
    if (status == 0) {
        printf("%s, orbit of the third pass: %ld\n", mission, orbit);
        for (i = 0; i < height_count; ++i)
            printf("%.3f\n", heights[i]);
    } else {
        char message[KH_MESSAGE_SIZE];
        fprintf(stderr, "%s\n", kh_basic_error_msg(status, message));
    }
    free(mission);
    free(heights);
    return status != 0;
}
