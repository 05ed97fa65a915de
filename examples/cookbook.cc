// The recipes of the cookbook in C++, each in a function of its own.
// Usage: cookbook_cc FILE
#include <kalv/XmlFile.h>
#include <kalv/file_handling.h>

#include <iostream>
#include <thread>
#include <vector>

namespace {

const std::string passes = "/Orvanto_File/Data_Block/List_of_Passes";

// The code of an error, beside its text.
long code_of(const KALV::KalvError& error)
{
    std::vector<long> codes;
    error.getCodes(codes);
    return codes.front();
}

// A value that may be missing.
double height_or(KALV::XmlFile& file, const std::string& path, double otherwise)
{
    try {
        return file.getPathValueAsReal(path);
    } catch (const KALV::KalvError& error) {
        if (code_of(error) != KH_ERR_NOT_FOUND && code_of(error) != KH_ERR_NO_VALUE)
            throw;
        return otherwise;
    }
}

// Several values of each record.
void print_records(KALV::XmlFile& file)
{
    const long count = file.getPathValueAsInt(passes + "/@count");
    for (long i = 1; i <= count; ++i) {
        file.toPath(passes + "/Pass[" + std::to_string(i) + "]");
        std::cout << file.getPathValueAsInt("Orbit") << ' ';
        std::cout << file.getPathValueAsString("../Track") << '\n';
    }
}

// All elements of a name, wherever they stand.
double sum_of_heights(KALV::XmlFile& file)
{
    std::vector<double> heights;
    file.getElementArrayAsReal("Height", heights);
    double sum = 0;
    for (const double height : heights)
        sum += height;
    return sum;
}

// All elements below an element, whatever their names.
void print_elements_below(KALV::XmlFile& file, const std::string& path)
{
    file.toPath(path);
    const std::string parent = file.currentPathName() + '/';
    for (bool more = true; more;) {
        try {
            file.next();
            more = file.currentPathName().compare(0, parent.size(), parent) == 0;
        } catch (const KALV::KalvError&) {
            more = false; // the document ends here
        }
        if (more)
            std::cout << file.currentElementName() << '\n';
    }
}

// The record that holds a value, and a change beside it.
void correct_height(KALV::XmlFile& file, const std::string& track, double height)
{
    const std::string found = file.findValueInPath(passes + "/Pass[*]/Track", track);
    file.setValue(found + "/../Height", height, "%.3f");
}

// A record more, behind the last.
void append_pass(KALV::XmlFile& file, long orbit, const std::string& track)
{
    const long count = file.getPathValueAsInt(passes + "/@count");
    file.addChild(passes, "Pass");
    file.addChild(".", "Orbit", orbit, "%ld");
    file.addNext(".", "Track", track);
    file.setValue(passes + "/@count", count + 1, "%ld");
}

// Nodes of another file.
void copy_header(KALV::XmlFile& file, const std::string& source)
{
    file.copyNode("/Copy", source, "/Orvanto_File/Orvanto_Header");
}

// Numbers exactly as they are to stand in the file.
void print_formats(KALV::XmlFile& file)
{
    file.addChild("/Copy", "Number");
    for (const char* format : {"%.3f", "%12.4e", "%g"}) {
        file.setValue(".", 1234.5678, format);
        std::cout << '"' << file.getPathValueAsString(".") << "\"\n";
    }
    file.setValue(".", 42, "%06ld");
    std::cout << '"' << file.getPathValueAsString(".") << "\"\n";
}

// A document without a file, and what is wrong with one.
void edit_in_memory(const std::string& text)
{
    try {
        KALV::XmlFile file;
        file.readMemory(text);
        file.setValue("/List/@count", 2);
        std::cout << file.toString();
    } catch (const KALV::KalvError& error) {
        std::cout << error.what() << '\n';
    }
}

// Parts of a product file name.
void print_name_items(std::string name)
{
    const KALV::XmlFile file; // needs no document
    const KALV::FileNameItems items = file.getFileNameItems(name);
    std::cout << items.satId << ' ' << items.fileClass << ' ' << items.fileType << ' ' << items.instanceId
              << '\n';
}

// Many files at once: each thread has objects of its own, and nothing else is needed.
void read_in_threads(const std::string& name)
{
    std::vector<double> sums(4);
    std::vector<std::thread> threads;
    for (double& sum : sums)
        threads.emplace_back([&] {
            KALV::XmlFile file(name);
            sum = sum_of_heights(file);
        });
    for (std::thread& thread : threads)
        thread.join();
    std::cout << sums.size() << " threads, the last one summed " << sums.back() << '\n';
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2)
        return 2;
    try {
        const std::string name = arguments[1];
        KALV::XmlFile file(name);
        std::cout << height_or(file, passes + "/Pass[2]/Height", 0) << '\n';
        std::cout << height_or(file, passes + "/Pass[9]/Height", 0) << '\n';
        print_records(file);
        std::cout << sum_of_heights(file) << '\n';
        print_elements_below(file, passes + "/Pass[2]");
        correct_height(file, "descending", -0.5);
        append_pass(file, 4713, "descending");
        print_records(file);

        KALV::XmlFile copy;
        copy.create();
        copy.createRoot("Copy");
        copy_header(copy, name);
        std::cout << copy.getFixedHeaderItem("Mission") << '\n';
        print_formats(copy);
        edit_in_memory("<List count='1'/>");
        edit_in_memory("<List>\n  <Item>\n</List>");
        print_name_items(name.substr(name.rfind('/') + 1));
        read_in_threads(name);
    } catch (const KALV::KalvError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
