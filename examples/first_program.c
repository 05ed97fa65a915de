#include <kalv/file_handling.h>

#include <stdio.h>
#include <stdlib.h>

int main(void)
{
    double* heights = NULL;
    long count = 0;
    long status = 0;
    long fd = kh_tree_init_parser("measurements.xml", &status);
    if (status == 0) {
        kh_tree_path_read_real_node_array(&fd, "/Measurements/Item[*]/Height", &heights, &count, &status);
        kh_tree_cleanup_parser(&fd, NULL);
    }
    if (status == 0) {
        printf("%ld heights, the last is %.1f\n", count, heights[count - 1]);
    } else {
        char message[KH_MESSAGE_SIZE];
        fprintf(stderr, "%s\n", kh_basic_error_msg(status, message));
    }
    free(heights);
    return status != 0;
}
