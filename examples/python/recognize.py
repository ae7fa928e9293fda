#!/usr/bin/env python3
"""Recognises a file through the C interface: recognize.py [-d DATABASE] FILE

FILE is a WAV file of 16 to 32 bits, of any sample rate, or a recording (.dat) of the
library's own. Without -d, the database is the installed one, which `lirvox index` makes.
Needs nothing but Python and the shared library liblirvox_c; the environment variable
LIRVOX_C_LIBRARY tells where it is if the system does not.
"""
import argparse
import ctypes
import ctypes.util
import os
import sys
import tempfile
import threading
import wave
from ctypes import CFUNCTYPE, c_char_p, c_double, c_float, c_int, c_int32, c_size_t, c_uint32, c_void_p

DID_RECOGNIZE = CFUNCTYPE(None, c_void_p, c_int32, c_float, c_float)
DID_NOT_RECOGNIZE = CFUNCTYPE(None, c_void_p)
RELEASE = CFUNCTYPE(None, c_void_p)
FORMATS = {2: 1, 3: 2, 4: 3}  # bytes per sample: LIRVOX_INT16, LIRVOX_INT24, LIRVOX_INT32

FUNCTIONS = {  # name: result, arguments
    "lirvox_last_error": (c_char_p,),
    "lirvox_platform_new": (c_void_p, c_char_p),
    "lirvox_platform_set_directories": (c_int, c_void_p, c_char_p, c_char_p, c_char_p),
    "lirvox_platform_use_feed": (c_void_p, c_void_p),
    "lirvox_platform_install": (c_int, c_void_p),
    "lirvox_feed_put": (c_int, c_void_p, c_char_p, c_size_t, c_uint32, c_uint32, c_int),
    "lirvox_feed_seconds": (c_double, c_void_p),
    "lirvox_shared_instance": (c_void_p,),
    "lirvox_database_new": (c_void_p, c_char_p),
    "lirvox_set_database": (c_int, c_void_p, c_void_p),
    "lirvox_set_delegate": (c_int, c_void_p, DID_RECOGNIZE, DID_NOT_RECOGNIZE, c_void_p, RELEASE),
    "lirvox_set_recording_time": (c_int, c_void_p, c_double),
    "lirvox_start_recognize": (c_int, c_void_p),
}


def load_library():
    name = os.environ.get("LIRVOX_C_LIBRARY") or ctypes.util.find_library("lirvox_c")
    if not name:
        sys.exit("liblirvox_c is not installed; LIRVOX_C_LIBRARY may tell where it is")
    library = ctypes.CDLL(name)

    def check(result, function, arguments):
        failed = result != 0 if function.restype is c_int else result is None
        if failed:
            sys.exit(library.lirvox_last_error().decode())
        return result

    for function_name, (result, *arguments) in FUNCTIONS.items():
        function = getattr(library, function_name)
        function.restype, function.argtypes, function.errcheck = result, arguments, check
    return library


def read_audio(path):
    """Samples, frames, sample rate, channels, format."""
    if path.endswith(".dat"):
        with open(path, "rb") as file:
            samples = file.read()
        return samples, len(samples) // 4, 11025, 1, FORMATS[4]
    with wave.open(path) as file:
        if file.getsampwidth() not in FORMATS:
            sys.exit(path + ": samples of 8 bits")
        return (file.readframes(file.getnframes()), file.getnframes(), file.getframerate(),
                file.getnchannels(), FORMATS[file.getsampwidth()])


def recognize(lirvox, audio, caches):
    """Track id and position in seconds, or None."""
    platform = lirvox.lirvox_platform_new(b"lirvox")
    lirvox.lirvox_platform_set_directories(platform, caches, None, None)
    feed = lirvox.lirvox_platform_use_feed(platform)
    lirvox.lirvox_platform_install(platform)
    recognizer = lirvox.lirvox_shared_instance()
    lirvox.lirvox_set_database(recognizer, lirvox.lirvox_database_new(None))

    answers, answered = [], threading.Event()

    def answer(result):
        answers.append(result)
        answered.set()

    # Python must keep the callbacks for as long as they may be called.
    yes = DID_RECOGNIZE(lambda context, track, position, now: answer((track, position)))
    no = DID_NOT_RECOGNIZE(lambda context: answer(None))
    lirvox.lirvox_set_delegate(recognizer, yes, no, None, RELEASE())
    lirvox.lirvox_feed_put(feed, *audio)
    lirvox.lirvox_set_recording_time(recognizer, lirvox.lirvox_feed_seconds(feed))
    lirvox.lirvox_start_recognize(recognizer)
    answered.wait()
    lirvox.lirvox_set_delegate(recognizer, DID_RECOGNIZE(), DID_NOT_RECOGNIZE(), None, RELEASE())
    return answers[0]


def main():
    parser = argparse.ArgumentParser(description="Recognise a WAV file or a recording.")
    parser.add_argument("-d", "--database", help="instead of the installed one")
    parser.add_argument("file")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        if options.database:  # a folder in which that database is the installed one
            os.mkdir(folder + "/lirvox")
            os.symlink(os.path.abspath(options.database), folder + "/lirvox/db1.sqlite")
        try:
            audio = read_audio(options.file)
        except (OSError, EOFError, wave.Error) as error:
            sys.exit("%s: %s" % (options.file, error))
        result = recognize(load_library(), audio, folder.encode() if options.database else None)
    print("track %d at %.2f s" % result if result else "not recognized")
    return 0 if result else 1


if __name__ == "__main__":
    sys.exit(main())
