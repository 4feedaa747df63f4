"""The demo song: a score, the sound made of it, and the words that the CD+G maker sets."""
