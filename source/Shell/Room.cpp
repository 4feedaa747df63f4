// Holds the room open until its first class.
