/** Keeps what was made for each text: making an object of `Intl` is slow, and lists need it for every row. */
export function kept<Made>(make: (text: string) => Made): (text: string) => Made {
    const all = new Map<string, Made>();
    return (text) => {
        const made = all.get(text) ?? make(text);
        all.set(text, made);
        return made;
    };
}
