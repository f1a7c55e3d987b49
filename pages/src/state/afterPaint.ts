/** Does something that can wait once the page has drawn what it has; soon if it is not drawn, because nobody looks at it. */
export function afterPaint(act: () => void): void {
    const run = () => {
        clearTimeout(timer);
        cancelAnimationFrame(frame);
        setTimeout(act);
    };
    const timer = setTimeout(run, 100);
    const frame = requestAnimationFrame(run);
}
