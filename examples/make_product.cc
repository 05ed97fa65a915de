// Makes a product file: its name, its header and a data block.
#include <kalv/XmlFile.h>
#include <kalv/product.h>

#include <iostream>

int main()
{
    struct Pass {
        long orbit;
        const char* track;
        double height;
    };
    const Pass passes[] = {
        {4711, "ascending", 1.254}, {4711, "descending", -0.031}, {4712, "ascending", 0.873}};

    try {
        KALV::XmlFile file;
        const long satellite = KH_Get_sat_id("Kesterwil1");
        const std::string name =
            file.createFileName(satellite, "OPER", "SEAHEIGHTS", "20310412T060000_20310412T073000_0001",
                                KH_Get_file_extension_type(satellite));

        KALV::FixedHeader header;
        header.fileName = name;
        header.fileDescription = "Sea surface heights along the track";
        header.mission = "Kesterwil1";
        header.fileClass = "OPER";
        header.fileType = "SEAHEIGHTS";
        header.validityStart = "UTC=2031-04-12T06:00:00";
        header.validityStop = "UTC=2031-04-12T07:30:00";
        header.fileVersion = 1;
        header.system = "Height processor";
        header.creator = "make_product";
        header.creatorVersion = "1.0";
        header.creationDate = "UTC=2031-04-12T09:15:00";
        header.headerType = KH_EXTENSION_EOF;

        file.create();
        file.createHeader(header);
        file.addChild("/Orvanto_File", "Data_Block");
        file.addAttribute(".", "type", "xml");
        file.addChild(".", "List_of_Passes");
        file.addAttribute(".", "count", 3);
        for (const Pass& pass : passes) {
            file.addChild("/Orvanto_File/Data_Block/List_of_Passes", "Pass");
            file.addChild(".", "Orbit", pass.orbit, "%ld");
            file.addNext(".", "Track", pass.track);
            file.addNext(".", "Height", pass.height, "%.3f");
            file.addAttribute(".", "unit", "m");
        }
        file.write(name);
        std::cout << name << '\n';
    } catch (const KALV::KalvError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}
