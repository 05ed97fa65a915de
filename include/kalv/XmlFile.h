/** \file XmlFile.h
 *  One XML document as an object. */
#ifndef KALV_XML_FILE_H
#define KALV_XML_FILE_H

#include <kalv/FileHandlingError.h>
#include <kalv/FileNameItems.h>
#include <kalv/FixedHeader.h>
#include <kalv/KalvError.h>
#include <string>
#include <type_traits>
#include <vector>

struct _xmlNode;

namespace KALV {

/** A document of the document table, owned: it is released with the object. An object can be moved, not
 *  copied; one that was moved from holds no document. Not to be used by two threads at once.
 *
 *  A method that fails throws a KalvError that carries the method's name and a code of status.h; a warning
 *  is thrown like an error. Below, "Throws" lists the codes that the method adds to those of every method:
 *  #KH_ERR_DESCRIPTOR the object holds no document; #KH_ERR_NO_DOCUMENT its document was released by
 *  others; #KH_ERR_NO_ROOT the document has no root element; #KH_ERR_ARGUMENT a text holds a zero byte;
 *  #KH_ERR_MEMORY. Memory that runs out in a text or vector of the result is std::bad_alloc. The status
 *  that a method returns is thus always 0.
 *
 *  Paths are those of path.h. "Along a path" stands for the moves of toPath() and all it throws. Element
 *  names are searched from the cursor forward, and the element under the cursor is not among those found;
 *  an empty name stands for the name asked for before, so that repeated reads walk through all elements of
 *  a name. */
class KH_EXPORT XmlFile {
public:
    /** \name Life of the document */
    /**@{*/

    /** Holds no document. */
    XmlFile();

    /** Holds the document of a file. Throws as read(), and under its name.
     *  \param[in] name the file */
    explicit XmlFile(const std::string& name);

    /** Releases the document. Throws under "XmlFile::~XmlFile" what kh_tree_cleanup_parser() reports
     *  (#KH_ERR_LOCK), but nothing while another exception unwinds. */
    ~XmlFile() noexcept(false);

    /** Takes over the document; the cursor stays. Throws nothing.
     *  \param[in,out] other holds no document afterwards */
    XmlFile(XmlFile&& other) noexcept;

    /** Takes over the document and releases the one held so far; moving to itself changes nothing. Throws
     *  as the destructor, under "XmlFile::operator=", when the move is done.
     *  \param[in,out] other holds no document afterwards
     *  \return this object */
    XmlFile& operator=(XmlFile&& other) noexcept(false);

    XmlFile(const XmlFile&) = delete;
    XmlFile& operator=(const XmlFile&) = delete;

    /** Begins an empty document, without root and cursor. A document held so far is released afterwards,
     *  also when this fails and the object holds none. Throws #KH_ERR_LOCK, #KH_ERR_TABLE_FULL or
     *  #KH_ERR_CREATE_DOCUMENT.
     *  \return the descriptor */
    long create();

    /** Reads a file; the cursor stands on the root. A document held so far is released afterwards, also
     *  when this fails and the object holds none. Throws #KH_ERR_LOCK, #KH_ERR_TABLE_FULL, #KH_ERR_PARSE or
     *  #KH_ERR_ROOT_ELEMENT.
     *  \param[in] name the file, see kh_tree_init_parser() */
    void read(const std::string& name);

    /** Reads a document that stands in memory, plain or compressed with gzip; else as read(). The object has
     *  no file name then.
     *  \param[in] data the bytes of a file */
    void readMemory(const std::string& data);

    /** The document as write() would save it, never compressed; the cursor stays, and so does the document
     *  after a failure. Throws as write().
     *  \return the bytes of the file */
    std::string toString();

    /** Saves the document to the file that was read last; the cursor stays. Throws #KH_ERR_SAVE, or
     *  #KH_ERR_CREATE_NODE and #KH_ERR_ADD_SIBLING when its indentation failed. After a failure the object
     *  holds no document; the document stays in the table, where kh_tree_write() can still save it: keep
     *  getId().
     *  \return 0 */
    long write();

    /** The same, to another file; getFileName() stays.
     *  \param[in] name the file, see kh_tree_write()
     *  \return 0 */
    long write(const std::string& name);

    /** Releases the document; the object holds none, also after a failure. Throws #KH_ERR_LOCK.
     *  \return 0 */
    long clean();

    /** The document's place in the table of documents, for the procedural interface. Throws nothing.
     *  \return the descriptor; -1 without a document */
    long getId() const;

    /** The file read last. Throws no KalvError.
     *  \return its name; empty before the first */
    std::string getFileName() const;
    /**@}*/

    /** \name Moves of the cursor */
    /**@{*/

    /** Moves to the root element. Throws nothing of its own.
     *  \return 0 */
    long root();

    /** Moves forward to the next element. Throws #KH_ERR_NOT_FOUND: the cursor stays.
     *  \return 0 */
    long next();

    /** Moves forward to the next element of a name. Throws #KH_ERR_NOT_FOUND: the cursor stays.
     *  \param[in] name the name; the empty one is a name like any other here
     *  \return 0 */
    long toElement(const std::string& name);

    /** Moves along a path. Throws #KH_WARN_ROOT_REACHED the path went above the root, where the cursor now
     *  stands; #KH_ERR_ARGUMENT a malformed path, or another root's name; #KH_ERR_PATH_LENGTH;
     *  #KH_ERR_NOT_FOUND the cursor stays, or stands on the last sibling tried.
     *  \param[in] path the path
     *  \return 0 */
    long toPath(const std::string& path);

    /** Moves to the next sibling that is an element. Throws nothing: where there is none the cursor stays,
     *  and a line on standard output says so.
     *  \return the element; null where there is none */
    struct _xmlNode* nextSibling();

    /** The name of the element under the cursor; the cursor stays. Throws #KH_ERR_NO_CURRENT or
     *  #KH_ERR_NOT_ELEMENT.
     *  \return the name, without prefix */
    std::string currentElementName() const;

    /** The path of the element under the cursor; the cursor stays. Throws #KH_ERR_NO_CURRENT or
     *  #KH_ERR_NOT_ELEMENT.
     *  \return the path, such as "/Root/List/Item[2]" */
    std::string currentPathName() const;
    /**@}*/

    /** \name Schema references of the element under the cursor
     *  The cursor stays. Throws nothing: where the references cannot be set, nothing changes. */
    /**@{*/

    /** Sets location and default namespace.
     *  \param[in] schema see KH_Set_Schema()
     *  \param[in] flag true: also the schema's version */
    void setSchema(const std::string& schema, bool flag);

    /** Removes the references.
     *  \param[in] flag true: with all declarations and attributes of the element; false: the location alone
     *      if the element declares the prefix "xsi", else as true */
    void removeSchema(bool flag);
    /**@}*/

    /** \name Values of elements */
    /**@{*/

    /** The value of the next element of a name; the cursor moves to it. Throws #KH_ERR_NOT_FOUND the cursor
     *  stays; #KH_ERR_NO_REQUEST an empty name, and none was asked for before; #KH_ERR_NO_VALUE;
     *  #KH_ERR_NOT_TERMINAL; for numbers #KH_ERR_NOT_INTEGER, #KH_ERR_NOT_REAL and #KH_ERR_RANGE.
     *  \param[in] element the name; empty: the one asked for before
     *  \return the value */
    std::string getElementValueAsString(const std::string& element);
    long getElementValueAsInt(const std::string& element);
    double getElementValueAsReal(const std::string& element);
    /**@}*/

    /** \name Values of attributes */
    /**@{*/

    /** The value of an attribute, of the element under the cursor if that has the name asked for, else of the
     *  next element of that name; the cursor moves to it. Throws #KH_ERR_NOT_FOUND, #KH_ERR_NO_REQUEST,
     *  #KH_ERR_NO_ATTRIBUTE, #KH_ERR_ARGUMENT an empty attribute name, #KH_ERR_NO_CURRENT; for numbers
     *  #KH_ERR_NOT_INTEGER, #KH_ERR_NOT_REAL and #KH_ERR_RANGE.
     *  \param[in] element the name; empty: the one asked for before
     *  \param[in] attribute the attribute's name
     *  \return the value */
    std::string getAttributeValueAsString(const std::string& element, const std::string& attribute);
    long getAttributeValueAsInt(const std::string& element, const std::string& attribute);
    double getAttributeValueAsReal(const std::string& element, const std::string& attribute);
    /**@}*/

    /** \name Values by path */
    /**@{*/

    /** The value of the element or attribute at a path; the cursor goes along it. Throws as toPath(), and
     *  #KH_ERR_NO_VALUE, #KH_ERR_NOT_TERMINAL; for numbers #KH_ERR_NOT_INTEGER, #KH_ERR_NOT_REAL and
     *  #KH_ERR_RANGE.
     *  \param[in] path the path, which may end with an attribute
     *  \return the value */
    std::string getPathValueAsString(const std::string& path);
    long getPathValueAsInt(const std::string& path);
    double getPathValueAsReal(const std::string& path);
    /**@}*/

    /** \name Arrays of all elements of a name, from the root */
    /**@{*/

    /** The values of all elements of a name below the root; the cursor stands on the last one read. Throws
     *  #KH_ERR_NOT_FOUND, #KH_ERR_NO_REQUEST an empty name, #KH_ERR_NO_VALUE, #KH_ERR_NOT_TERMINAL; for
     *  numbers #KH_ERR_NOT_INTEGER, #KH_ERR_NOT_REAL and #KH_ERR_RANGE.
     *  \param[in] element the name
     *  \param[in,out] values the values are appended; after a failure as before */
    void getElementArrayAsInt(const std::string& element, std::vector<long>& values);
    void getElementArrayAsReal(const std::string& element, std::vector<double>& values);
    void getElementArrayAsString(const std::string& element, std::vector<std::string>& values);
    /**@}*/

    /** \name Arrays by a path with one "[*]" */
    /**@{*/

    /** The values of all nodes of a path; the cursor stands where the read ended. Throws what toPath()
     *  throws for a path; #KH_ERR_ARGUMENT also for one without "[*]"; #KH_ERR_NO_VALUE,
     *  #KH_ERR_NOT_TERMINAL; for integers #KH_ERR_NOT_INTEGER and #KH_ERR_RANGE.
     *  \param[in] path the path, which may end with an attribute
     *  \param[in,out] values the values are appended; after a failure as before */
    void getPathArrayAsInt(const std::string& path, std::vector<long>& values);
    void getPathArrayAsString(const std::string& path, std::vector<std::string>& values);

    /** The same as reals. Throws no KalvError: whatever fails, nothing is appended. Callers rely on it.
     *  \param[in] path the path, which may end with an attribute
     *  \param[in,out] values the values are appended */
    void getPathArrayAsReal(const std::string& path, std::vector<double>& values);
    /**@}*/

    /** \name Lists and searches */
    /**@{*/

    /** The values of a counted list, such as `<List count="2">`. Goes along the path to the list, then
     *  reads the next element called `item` as often as its attribute "count" says; the cursor stands on
     *  the last one. Throws as toPath(), currentElementName(), getAttributeValueAsInt() and
     *  getElementValueAsString(), and under their names.
     *  \param[in] listPath path of the list
     *  \param[in] item name of the items; empty: that of the list
     *  \param[in,out] values the values are appended; those read before a failure stay */
    void getStringValuesFromList(const std::string& listPath, const std::string& item,
                                 std::vector<std::string>& values);

    /** Searches the elements of a name behind the cursor for a value; the cursor moves to the one found.
     *  Throws #KH_ERR_VALUE_NOT_FOUND, or the code of the first read where no value could be read: the
     *  cursor stays.
     *  \param[in] element the name
     *  \param[in] value the value
     *  \return the path of the element */
    std::string findValueInElement(const std::string& element, const std::string& value);

    /** Searches the nodes of a path with "[*]" for a value; the cursor stands where the read ended. Throws
     *  #KH_ERR_VALUE_NOT_FOUND and as getPathArrayAsString(): the cursor stays.
     *  \param[in] path the path
     *  \param[in] value the value
     *  \return the path with the 1-based index of the first match for the "*" */
    std::string findValueInPath(const std::string& path, const std::string& value);
    /**@}*/

    /** \name Nodes
     *  A name that XML does not allow throws #KH_ERR_ARGUMENT, and nothing changes. */
    /**@{*/

    /** Gives an empty document its root; the cursor stands on it. Throws #KH_ERR_ROOT_EXISTS or
     *  #KH_ERR_CREATE_NODE.
     *  \param[in] name the element's name
     *  \return 0 */
    long createRoot(const std::string& name);

    /** Adds an element as last child of the one at a path; the cursor moves to it. Throws along the path,
     *  and #KH_ERR_CREATE_NODE.
     *  \param[in] path the path
     *  \param[in] name the element's name
     *  \return 0 */
    long addChild(const std::string& path, const std::string& name);

    /** Adds an element right after the one at a path; the cursor moves to it. Throws along the path, and
     *  #KH_ERR_CREATE_NODE, #KH_ERR_ADD_SIBLING.
     *  \param[in] path the path
     *  \param[in] name the element's name
     *  \return 0 */
    long addNext(const std::string& path, const std::string& name);

    /** Adds an element right before the one at a path; the cursor moves to it. Throws as addNext().
     *  \param[in] path the path
     *  \param[in] name the element's name
     *  \return 0 */
    long addPrevious(const std::string& path, const std::string& name);

    /** Adds an attribute without value to the element at a path, where the cursor moves; one that it has is
     *  left as it is. Throws along the path, and #KH_ERR_NOT_ELEMENT.
     *  \param[in] path the path
     *  \param[in] attribute the attribute's name
     *  \return 0 */
    long addAttribute(const std::string& path, const std::string& attribute);

    /** Appends a copy of a node of a file to the element at a path from the root; the cursor stays there.
     *  Throws #KH_ERR_NOT_FOUND for either path, #KH_ERR_NOT_ELEMENT or #KH_ERR_PARSE.
     *  \param[in] path the path
     *  \param[in] sourceFile the file
     *  \param[in] sourcePath the node's path in it
     *  \return 0 */
    long copyNode(const std::string& path, const std::string& sourceFile, const std::string& sourcePath);
    /**@}*/

    /** Removes the attribute, or the node with all below it, at a path; the cursor moves to the parent.
     *  Throws along the path, and #KH_ERR_REMOVE_NODE.
     *  \param[in] path the path */
    void removeNode(const std::string& path);

    /** \name Setting values */
    /**@{*/

    /** Sets the text of the element or attribute at a path, where the cursor moves. Throws along the path,
     *  and #KH_WARN_LENGTH the text was cut to 510 bytes; #KH_ERR_FORMAT; #KH_ERR_NOT_ELEMENT;
     *  #KH_ERR_ARGUMENT the text is not UTF-8, or XML forbids it.
     *  \param[in] path the path
     *  \param[in] value a text; an integer or enumerator of any type, which is taken as `long`; or a floating
     *      number, which is taken as `double`
     *  \param[in] format the format that prints the value, see kh_tree_set_string_node_value(); empty:
     *      "%s", "%d" or "%#lf". Give "%ld" for integers beyond 32 bits, of which "%d" prints the low
     *      half. */
    void setValue(const std::string& path, const std::string& value, const std::string& format = {});
    void setValue(const std::string& path, long value, const std::string& format = {});
    void setValue(const std::string& path, double value, const std::string& format = {});
    template <class Number,
              std::enable_if_t<std::is_arithmetic_v<Number> ||
                                   (std::is_enum_v<Number> && std::is_convertible_v<Number, long>),
                               int> = 0>
    void setValue(const std::string& path, Number value, const std::string& format = {})
    {
        setValue(path, static_cast<std::conditional_t<std::is_floating_point_v<Number>, double, long>>(value),
                 format);
    }
    /**@}*/

    /** \name Nodes with a first value
     *  The call without value, then setValue() on the node added, with the values it takes. Throws as the
     *  two, and under their names: after "XmlFile::setValue" the node is there. */
    /**@{*/

    /** Adds an element as last child of, right after or right before the one at a path, and sets its value;
     *  the cursor moves to it.
     *  \param[in] path the path
     *  \param[in] name the element's name
     *  \param[in] value a text or a number
     *  \param[in] format the format that prints the value, see setValue()
     *  \return nothing */
    template <class Value>
    auto addChild(const std::string& path, const std::string& name, Value value,
                  const std::string& format = {}) -> decltype(setValue(path, value, format))
    {
        addChild(path, name);
        setValue(".", value, format);
    }
    template <class Value>
    auto addNext(const std::string& path, const std::string& name, Value value,
                 const std::string& format = {}) -> decltype(setValue(path, value, format))
    {
        addNext(path, name);
        setValue(".", value, format);
    }
    template <class Value>
    auto addPrevious(const std::string& path, const std::string& name, Value value,
                     const std::string& format = {}) -> decltype(setValue(path, value, format))
    {
        addPrevious(path, name);
        setValue(".", value, format);
    }

    /** Adds an attribute to the element at a path and sets its value; the cursor moves to the element.
     *  \param[in] path the path
     *  \param[in] attribute the attribute's name
     *  \param[in] value a text or a number
     *  \param[in] format the format that prints the value, see setValue()
     *  \return nothing */
    template <class Value>
    auto addAttribute(const std::string& path, const std::string& attribute, Value value,
                      const std::string& format = {}) -> decltype(setValue(path, value, format))
    {
        addAttribute(path, attribute);
        setValue("./@" + attribute, value, format);
    }
    /**@}*/

    /** \name Fixed header, see kh_tree_create_header() */
    /**@{*/

    /** Gives the document the skeleton of the header; the cursor stands on its `Variable_Header`. Throws
     *  #KH_WARN_HEADER_EXISTS, #KH_ERR_NO_HEADER_TYPE or #KH_ERR_CREATE_NODE.
     *  \param[in] type format version * 10 + extension type
     *  \return 0 */
    long createHeader(long type);

    /** Gives the document a header and writes its items; `schema` and `kvstdVersion` are not among them.
     *  Throws as createHeader(long) and setFixedHeaderItems(), under its own name; what was made before
     *  stays.
     *  \param[in] header the items; unchanged */
    void createHeader(FixedHeader& header);

    /** Writes one item; the cursor moves to it. Throws #KH_WARN_LENGTH the value was cut;
     *  #KH_ERR_NOT_HEADER_ITEM; #KH_ERR_NOT_FOUND; #KH_ERR_FORMAT the value could not be set.
     *  \param[in] item its tag; an element of any other name is left as it is
     *  \param[in] value the text */
    void setFixedHeaderItem(const std::string& item, const std::string& value);

    /** Writes thirteen items. Throws #KH_WARN_LENGTH, or #KH_ERR_FORMAT for any failure: the items before
     *  it stay written, the cursor stands on the last one.
     *  \param[in] fileName `File_Name`
     *  \param[in] fileDescription `File_Description`
     *  \param[in] notes `Notes`
     *  \param[in] mission `Mission`
     *  \param[in] fileClass `File_Class`
     *  \param[in] fileType `File_Type`
     *  \param[in] validityStart `Validity_Start`
     *  \param[in] validityStop `Validity_Stop`
     *  \param[in] fileVersion `File_Version`
     *  \param[in] system `System`
     *  \param[in] creator `Creator`
     *  \param[in] creatorVersion `Creator_Version`
     *  \param[in] creationDate `Creation_Date` */
    void setFixedHeaderItems(const std::string& fileName, const std::string& fileDescription,
                             const std::string& notes, const std::string& mission,
                             const std::string& fileClass, const std::string& fileType,
                             const std::string& validityStart, const std::string& validityStop,
                             long fileVersion, const std::string& system, const std::string& creator,
                             const std::string& creatorVersion, const std::string& creationDate);

    /** Reads one item; the cursor moves to it. Throws #KH_ERR_NOT_HEADER_ITEM, #KH_ERR_NO_VALUE or
     *  #KH_ERR_READ_ITEM.
     *  \param[in] item its tag
     *  \return the text; empty for any other name */
    std::string getFixedHeaderItem(const std::string& item);

    /** Reads the items; the cursor moves to the last one. Items that cannot be read are empty, and throw
     *  nothing.
     *  \return the items; `schema` is "_NOSCHEMA_", `kvstdVersion` empty and `headerType` -1, whatever the
     *      file holds */
    FixedHeader getFixedHeader();
    /**@}*/

    /** \name Product file names; an object without a document will do */
    /**@{*/

    /** Composes a name. Throws #KH_WARN_LENGTH an item is too long; #KH_ERR_FILE_NAME_LENGTH more than 64
     *  characters.
     *  \param[in] satId the satellite, see KH_Get_sat_id(); one without a mission code gives "XXX_"
     *  \param[in] fileClass at most 4 characters; the empty text gives "XXXX"
     *  \param[in] fileType at most 10 characters
     *  \param[in] instanceId at most 42 characters
     *  \param[in] extensionType ::kh_file_extension; any other number appends nothing
     *  \return the name */
    std::string createFileName(long satId, const std::string& fileClass, const std::string& fileType,
                               const std::string& instanceId, long extensionType) const;

    /** Splits a name; every item comes whole, whatever its length. Throws #KH_ERR_FILE_NAME_LENGTH.
     *  \param[in] fileName at most 64 characters; unchanged
     *  \return the items */
    FileNameItems getFileNameItems(std::string& fileName) const;
    /**@}*/

private:
    long descriptor_;
    std::string file_name_;
};

} // namespace KALV

#endif
