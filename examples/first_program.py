import kalv

with kalv.XmlFile().create() as doc:
    doc.create_root("Measurements")
    for orbit in range(1, 4):
        doc.add_child("/Measurements", "Item")
        doc.add_child(".", "Orbit", orbit)
        doc.add_next(".", "Height", 700.5 + orbit, "%.3f")
    doc.save("measurements_of_python.xml")

with kalv.XmlFile("measurements_of_python.xml") as doc:
    heights = doc.values("/Measurements/Item[*]/Height", dtype=float)
    print(len(heights), "heights, the second is", heights[1])
    for item in doc.children("/Measurements"):
        print(item.path, item.get_int("Orbit"), item["Height"])
    try:
        doc["/Measurements/Item[4]/Height"]
    except kalv.KalvError as error:
        print(error)
