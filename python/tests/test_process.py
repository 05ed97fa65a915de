"""What concerns a process as a whole: its beginning and end, and children. Each test is a process of its own."""

import subprocess
import sys


def expect_fine(program, printed=""):
    """Runs a program, which could die or wait for ever."""
    done = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, timeout=300)
    assert (done.returncode, done.stdout, done.stderr) == (0, printed, "")


def test_the_first_arrays_are_read_in_many_threads():
    expect_fine("""
import sys, threading, kalv
sys.setswitchinterval(1e-6)
barrier = threading.Barrier(8)
def read():
    doc = kalv.XmlFile.from_bytes(b"<R><A>1</A></R>")
    barrier.wait()
    assert doc.values("/R/A[*]") == [1]
threads = [threading.Thread(target=read) for _ in range(8)]
for thread in threads: thread.start()
for thread in threads: thread.join()
""")


def test_the_end_with_open_documents():
    expect_fine("""
import kalv
doc = kalv.XmlFile.from_bytes(b"<R><A>1</A></R>")
element = doc.element("/R/A")
children = iter(doc.element("/R"))
values = doc.values("/R/A[*]")
class Keeper:
    def __init__(self):
        self.me, self.doc = self, kalv.XmlFile.from_bytes(b"<R><A>1</A></R>")
    def __del__(self, print=print):
        try:
            self.doc["/R/None"]
        except Exception as error:
            print(self.doc["/R/A"], type(error).__name__)
keeper = Keeper()
""", "1 KalvError\n")


def test_the_end_while_threads_read(tmp_path):
    (tmp_path / "file.xml").write_text("<R>" + "<A>1</A>" * 20000 + "</R>")
    expect_fine(f"""
import kalv, threading, time
path = {str(tmp_path / "file.xml")!r}
shared = kalv.XmlFile(path)
def open_and_read():
    while True:
        kalv.XmlFile(path).values("/R/A[*]")
def read():
    while True:
        try:
            shared.values("/R/A[*]")
        except kalv.InUseError:
            pass
for work in [open_and_read, open_and_read, read, read]:
    threading.Thread(target=work, daemon=True).start()
time.sleep(0.05)
""")


def test_a_child_has_documents_of_its_own():
    expect_fine("""
import kalv, os
doc = kalv.XmlFile.from_bytes(b"<R><A>1</A></R>")
child = os.fork()
doc["/R/A"] = 2 if child else 3
assert doc["/R/A"] == ("2" if child else "3")
doc.close()
kalv.XmlFile.from_bytes(b"<R/>").close()
if child:
    assert os.waitpid(child, 0)[1] == 0
""")


def test_children_while_threads_open_files(tmp_path):
    (tmp_path / "file.xml").write_text("<R>" + "<A>1</A>" * 20000 + "</R>")
    expect_fine(f"""
import kalv, os, signal, threading
path = {str(tmp_path / "file.xml")!r}
stop = threading.Event()
def read():
    while not stop.is_set():
        kalv.XmlFile(path).values("/R/A[*]")
threads = [threading.Thread(target=read) for _ in range(3)]
for thread in threads: thread.start()
for _ in range(20):
    child = os.fork()
    if not child:
        signal.alarm(60)
        kalv.XmlFile().create().create_root("R")  # reading would need locks of libxml2's, which no child frees
        os._exit(0)
    assert os.waitpid(child, 0)[1] == 0
stop.set()
for thread in threads: thread.join()
""")


def test_a_document_in_use_stays_so_in_a_child(tmp_path):
    expect_fine(f"""
import kalv, os, threading, time
path = {str(tmp_path / "fifo")!r}
os.mkfifo(path)
doc = kalv.XmlFile()
reader = threading.Thread(target=doc.read, args=[path])
reader.start()  # opening the pipe waits for its writer
def in_use():
    try:
        return doc.closed is None
    except kalv.InUseError:
        return True
while not in_use():
    time.sleep(0.001)
child = os.fork()
if not child:
    assert in_use()
    del doc, reader
    os._exit(0)
assert os.waitpid(child, 0)[1] == 0
open(path, "w").write("<R>text</R>")
reader.join()
assert doc["/R"] == "text"
""")
