/* Shows the report of a failure that verbose mode prints.
 * Usage: verbose_report FILE */
#include <kalv/file_handling.h>

int main(int count, char** arguments)
{
    double height = 0;
    long status = 0;
    long fd;

    if (count != 2)
        return 2;
    fd = kh_tree_init_parser(arguments[1], &status);
    kh_verbose();
    kh_tree_path_read_real_node_value(&fd, "/Orvanto_File/Data_Block/List_of_Passes/Pass[2]/Track", &height,
                                      &status);
    kh_tree_path_read_real_node_value(&fd, "/Orvanto_File/Data_Block/Pass[9]/Height", &height, &status);
    kh_silent();
    kh_tree_cleanup_parser(&fd, NULL);
    return 0;
}
